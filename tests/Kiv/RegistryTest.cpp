#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"
#include "tests/support/Testing.h"

// All that a scripting layer sees of the library, in one text: registry.txt. A change to it is a change to scripts.
namespace Kiv::Testing {

namespace {

// What is read can be printed and passed on, but for records that have no text of their own.
std::string nameOf(Zam::TypeUse const& use) {
   auto const isKnown = [](auto part) { return part == typeid(void) || Zam::TypeRegistry::instance().isKnown(part); };
   return use.name() + (isKnown(use.type) && isKnown(use.key) ? "" : " (unknown)");
}

std::string parametersOf(Zam::Signature const& signature) {
   std::string text;
   for (auto const& [name, type] : signature.parameters) {
      text.append(text.empty() ? "" : ", ").append(name).append(name.empty() ? "" : ": ").append(nameOf(type));
   }
   return "(" + text + ")";
}

void writeOperation(std::ostream& out, Zam::Signature const& operation) {
   constexpr char const* access[] = {" static", "", " changes"};
   out << "   " << operation.name << parametersOf(operation) << access[static_cast<int>(operation.access)];
   if (operation.result.kind != Zam::TypeUse::Kind::nothing) {
      out << " -> " << nameOf(operation.result);
   }
   out << (operation.line.empty() ? "" : "  # " + operation.line) << "\n";
}

void writeType(std::ostream& out, Zam::TypeInfo const& type) {
   out << type.name() << (type.isEntity() ? " entity" : " value") << "\n";
   for (auto const* const constructor : type.constructors()) {
      writeOperation(out, *constructor);
   }
   for (auto const name : type.attributes()) {
      auto const& attribute = type.attributeSignature(name);
      out << "   " << name << ": " << nameOf(attribute.result) << (type.isSettable(name) ? " settable" : "")
          << (attribute.line.empty() ? "" : "  # " + attribute.line) << "\n";
   }
   for (auto const name : type.operations()) {
      writeOperation(out, type.operationSignature(name));
   }
}

TEST(RegistryTest, isWhatScriptsSee) {
   registerTypes();
   std::ostringstream seen;
   for (auto const name : Zam::TypeRegistry::instance().typeNames()) {
      writeType(seen, *Zam::TypeRegistry::instance().type(name));
   }
   std::ifstream file(KIV_SOURCE_DIR "/tests/Kiv/registry.txt");
   std::string const expected{std::istreambuf_iterator<char>(file), {}};
   auto const wanted = ::testing::TempDir() + "registry.txt";
   if (seen.str() != expected) {
      std::ofstream(wanted) << seen.str();
   }
   EXPECT_TRUE(seen.str() == expected) << "compare tests/Kiv/registry.txt with what is there: " << wanted;
}

}  // namespace

}  // namespace Kiv::Testing
