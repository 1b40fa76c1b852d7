#include "Zam/TypeRegistry.h"

#include <cxxabi.h>
#include <cstdlib>

namespace Zam {

TypeRegistry& TypeRegistry::instance() {
   static TypeRegistry registry;
   return registry;
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

namespace {

// The basic types by the runtime's names.
std::string_view basicName(std::type_index type) {
   static std::map<std::type_index, std::string_view> const names{
       {typeid(U8), "U8"},
       {typeid(U16), "U16"},
       {typeid(U32), "U32"},
       {typeid(U64), "U64"},
       {typeid(S32), "S32"},
       {typeid(S64), "S64"},
       {typeid(String), "Zam::String"},
       {typeid(void), "nothing"},
   };
   auto const found = names.find(type);
   return found != names.end() ? found->second : std::string_view();
}

}  // namespace

std::string typeName(std::type_index type) {
   if (auto const basic = basicName(type); !basic.empty()) {
      return std::string(basic);
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
