#pragma once

#include "Zam/TypeBuilder.h"
#include "Zam/TypeInfo.h"

#include <any>
#include <map>
#include <string>
#include <string_view>
#include <typeindex>
#include <vector>

namespace Zam {

// All types by name: how a scripting layer reaches the library. Each library registers its types from one function of
// its own, before any use; calling that function again changes nothing. Registering takes turns under the activity
// lock, or happens before the second thread; everything else only reads.
class KIV_EXPORT TypeRegistry {
 public:
   static TypeRegistry& instance();

   // Null for a name that is not registered.
   TypeInfo const* type(std::string_view name) const;
   // The type of the value or entity that an any holds; null when it is not registered.
   TypeInfo const* typeOf(std::any const& object) const;
   std::vector<std::string_view> typeNames() const;
   // Whether it is the type of registered values or handles.
   bool isKnown(std::type_index held) const { return byHeld_.contains(held); }

   // A described value type, under its own name. It is constructed from nothing, from all attributes or from text,
   // and has all its attributes; what else it offers is added through the builder.
   template <Described T>
   TypeBuilder<T> value() {
      return TypeBuilder<T>(added(descriptionOf<T>.typeName, typeid(T), {}));
   }
   // A value type that stands for itself, as numbers and addresses do: printed, compared, hashed, made from its text.
   template <class T>
   requires(!Described<T> && !std::is_enum_v<T>) TypeBuilder<T> value(std::string_view name) {
      return TypeBuilder<T>(added(name, typeid(T), {}));
   }
   // An enumeration with names: constructed from text, its name, and printed as that.
   template <NamedEnum E>
   TypeBuilder<E> enumeration(std::string_view name) {
      return TypeBuilder<E>(added(name, typeid(E), {}));
   }
   // An entity; everything it offers is added through the builder.
   template <std::derived_from<PtrInterface> T>
   TypeBuilder<T> entity(std::string_view name) {
      auto& type = added(name, typeid(Ptr<T>), [](std::any const& held) -> detail::EntityHandle {
         return {std::any_cast<Ptr<T>>(&held)->get(), false};
      });
      alias(type, typeid(Ptr<T const>), [](std::any const& held) -> detail::EntityHandle {
         return {std::any_cast<Ptr<T const>>(&held)->get(), true};
      });
      return TypeBuilder<T>(type);
   }

 private:
   using AsEntity = detail::EntityHandle (*)(std::any const& held);
   struct Known {
      TypeInfo const* type = nullptr;
      // Null for a value type.
      AsEntity asEntity = nullptr;
   };
   friend std::optional<detail::EntityHandle> detail::entityOf(std::any const&);
   friend std::string typeName(std::type_index);

   // Knows the basic types, under the runtime's names.
   TypeRegistry();
   TypeInfo& added(std::string_view name, std::type_index held, AsEntity asEntity);
   void alias(TypeInfo const& type, std::type_index held, AsEntity asEntity);

   // Node-based: what type() hands out stays.
   std::map<std::string, TypeInfo, std::less<>> types_;
   std::map<std::type_index, Known> byHeld_;
};

}  // namespace Zam
