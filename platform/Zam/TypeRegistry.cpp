#include "Zam/TypeRegistry.h"

#include <cxxabi.h>
#include <cstdlib>

namespace Zam {

TypeRegistry& TypeRegistry::instance() {
   static TypeRegistry registry;
   return registry;
}

TypeRegistry::TypeRegistry() {
   value<bool>("bool");
   value<U8>("U8");
   value<U16>("U16");
   value<U32>("U32");
   value<U64>("U64");
   value<S32>("S32");
   value<S64>("S64");
   value<double>("double");
   value<String>("Zam::String");
}

TypeInfo const* TypeRegistry::type(std::string_view name) const {
   auto const found = types_.find(name);
   return found != types_.end() ? &found->second : nullptr;
}

TypeInfo const* TypeRegistry::typeOf(std::any const& object) const {
   auto const found = byHeld_.find(object.type());
   return found != byHeld_.end() ? found->second.type : nullptr;
}

std::vector<std::string_view> TypeRegistry::typeNames() const {
   std::vector<std::string_view> names;
   for (auto const& [name, type] : types_) {
      names.push_back(name);
   }
   return names;
}

TypeInfo& TypeRegistry::added(std::string_view name, std::type_index held, AsEntity asEntity) {
   auto& type = types_.try_emplace(std::string(name), name).first->second;
   alias(type, held, asEntity);
   return type;
}

void TypeRegistry::alias(TypeInfo const& type, std::type_index held, AsEntity asEntity) {
   auto const [known, isNew] = byHeld_.try_emplace(held, Known{&type, asEntity});
   assertThat(isNew || known->second.type == &type, "a type is registered under one name", "Zam/TypeRegistry");
}

std::string typeName(std::type_index type) {
   if (type == typeid(void)) {
      return "nothing";
   }
   auto const& known = TypeRegistry::instance().byHeld_;
   if (auto const found = known.find(type); found != known.end()) {
      return std::string(found->second.type->name());
   }
   int status = 0;
   auto* const demangled = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
   std::string name(status == 0 ? demangled : type.name());
   std::free(demangled);
   return name;
}

std::optional<detail::EntityHandle> detail::entityOf(std::any const& argument) {
   if (argument.type() == typeid(std::nullptr_t)) {
      return EntityHandle{};
   }
   if (auto const* const entity = std::any_cast<Ptr<PtrInterface>>(&argument)) {
      return EntityHandle{entity->get(), false};
   }
   if (auto const* const entity = std::any_cast<Ptr<PtrInterface const>>(&argument)) {
      return EntityHandle{entity->get(), true};
   }
   auto const& known = TypeRegistry::instance().byHeld_;
   auto const found = known.find(argument.type());
   if (found == known.end() || found->second.asEntity == nullptr) {
      return std::nullopt;
   }
   return found->second.asEntity(argument);
}

}  // namespace Zam
