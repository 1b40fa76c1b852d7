#pragma once

#include "Zam/Collection.h"
#include "Zam/Export.h"
#include "Zam/Int.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>

namespace Zam {

// The name of a C++ type under which the runtime knows it, or else its name in the language.
KIV_EXPORT std::string typeName(std::type_index type);

namespace detail {

template <class T>
struct IsPtr : std::false_type {};
template <class T>
struct IsPtr<Ptr<T>> : std::true_type {};

}  // namespace detail

// What an attribute, an argument or a result is: the type, of a collection that of its elements and, of a map, of its
// keys. Views of text count as strings.
struct TypeUse {
   enum class Kind : U8 { nothing, value, enumeration, entity, map, set, list };

   Kind kind = Kind::nothing;
   std::type_index type = typeid(void);
   std::type_index key = typeid(void);

   bool isCollection() const noexcept { return kind >= Kind::map; }
   // Types by their names: "U8", "map of U16 to Zam::String", "set of Kiv::RouteFilterBase".
   KIV_EXPORT std::string name() const;
   bool operator==(TypeUse const&) const = default;

   template <class Type>
   static TypeUse of() {
      using T = std::remove_cvref_t<Type>;
      if constexpr (std::is_void_v<T>) {
         return {};
      } else if constexpr (std::same_as<T, std::string_view>) {
         return of<String>();
      } else if constexpr (detail::IsPtr<T>::value) {
         return {Kind::entity, typeid(T)};
      } else if constexpr (KeyedCollection<T>) {
         using Parts = detail::CollectionParts<T>;
         return {Kind::map, typeid(typename Parts::Value), typeid(typename Parts::Key)};
      } else if constexpr (Collection<T>) {
         return {SetCollection<T> ? Kind::set : Kind::list, typeid(typename detail::CollectionParts<T>::Value)};
      } else {
         return {std::is_enum_v<T> ? Kind::enumeration : Kind::value, typeid(T)};
      }
   }
};

}  // namespace Zam
