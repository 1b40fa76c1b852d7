#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"
#include "tests/support/Testing.h"

// All that a scripting layer sees of the library, in one text: registry.txt. A change to it is a change to scripts.
namespace Kiv::Testing {

namespace {

std::string parametersOf(Zam::Signature const& signature) {
   std::string text;
   for (auto const& [name, type] : signature.parameters) {
      text.append(text.empty() ? "" : ", ").append(name).append(name.empty() ? "" : ": ").append(type.name());
   }
   return "(" + text + ")";
}

void writeOperation(std::ostream& out, Zam::Signature const& operation) {
   constexpr char const* access[] = {" static", "", " changes"};
   out << "   " << operation.name << parametersOf(operation) << access[static_cast<int>(operation.access)];
   if (operation.result.kind != Zam::TypeUse::Kind::nothing) {
      out << " -> " << operation.result.name();
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
      out << "   " << name << ": " << attribute.result.name() << (type.isSettable(name) ? " settable" : "")
          << (attribute.line.empty() ? "" : "  # " + attribute.line) << "\n";
   }
   for (auto const name : type.operations()) {
      writeOperation(out, type.operationSignature(name));
   }
}

class RegistryTest : public ::testing::Test {
 protected:
   static void SetUpTestSuite() { registerTypes(); }

   // Those of the library; other tests register types of their own.
   static std::vector<Zam::TypeInfo const*> types() {
      std::vector<Zam::TypeInfo const*> types;
      for (auto const name : Zam::TypeRegistry::instance().typeNames()) {
         types.push_back(Zam::TypeRegistry::instance().type(name));
      }
      return types;
   }
   // Everything that is used somewhere as an attribute, an argument or a result.
   static std::set<std::pair<std::string, std::string>> unknownTypes() {
      std::set<std::pair<std::string, std::string>> unknown;
      for (auto const* const type : types()) {
         auto const look = [&](Zam::Signature const& at) {
            std::vector<Zam::TypeUse> uses{at.result};
            for (auto const& parameter : at.parameters) {
               uses.push_back(parameter.type);
            }
            for (auto const& use : uses) {
               for (auto const& part : {use.type, use.key}) {
                  if (part != typeid(void) && !Zam::TypeRegistry::instance().isKnown(part)) {
                     unknown.emplace(Zam::typeName(part), std::string(type->name()) + "." + at.name);
                  }
               }
            }
         };
         std::ranges::for_each(type->constructors(), [&](auto const* at) { look(*at); });
         std::ranges::for_each(type->attributes(), [&](auto name) { look(type->attributeSignature(name)); });
         std::ranges::for_each(type->operations(), [&](auto name) { look(type->operationSignature(name)); });
      }
      return unknown;
   }
};

TEST_F(RegistryTest, isWhatScriptsSee) {
   std::ostringstream seen;
   for (auto const* const type : types()) {
      writeType(seen, *type);
   }
   std::ifstream file(KIV_SOURCE_DIR "/tests/Kiv/registry.txt");
   std::string const expected{std::istreambuf_iterator<char>(file), {}};
   auto const wanted = ::testing::TempDir() + "registry.txt";
   if (seen.str() != expected) {
      std::ofstream(wanted) << seen.str();
   }
   EXPECT_TRUE(seen.str() == expected) << "compare tests/Kiv/registry.txt with what is there: " << wanted;
}

// What is read can be printed and passed on, but for records that have no text of their own.
TEST_F(RegistryTest, knowsTheTypesThatItHandsOver) {
   std::set<std::string> unknown;
   for (auto const& [type, user] : unknownTypes()) {
      unknown.insert(type);
   }
   EXPECT_EQ(unknown,
             (std::set<std::string>{"Tunnel::CliSupport::CachedIpTunnelInfo", "Tunnel::CliSupport::SortedTunVia",
                                    "Vault::Fib6::Route", "Vault::Fib::Route"}));
}

}  // namespace

}  // namespace Kiv::Testing
