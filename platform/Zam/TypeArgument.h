#pragma once

#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/Strep.h"

#include <any>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <utility>

// Arguments of the runtime's operations, which arrive as std::any and are converted to what the operation takes:
// any integer to an integer type that can hold it, text to a string type, nullptr and handles of more derived or less
// constant entities to a Ptr, and an explicit fromText(...) to every type that has a textual form.
namespace Zam {

// The caller named a type, an operation or arguments that do not exist.
class KIV_EXPORT TypeError : public std::logic_error {
 public:
   explicit TypeError(std::string const& message) : std::logic_error(message) {}
   ~TypeError() override;
};

// An argument that is given by its textual form.
struct FromText {
   std::string text;
};
inline FromText fromText(std::string text) {
   return {std::move(text)};
}

// The name of a C++ type under which the runtime knows it, or else its name in the language.
KIV_EXPORT std::string typeName(std::type_index type);

// Which operation is being called, for messages.
struct OperationName {
   std::string_view type;
   std::string_view operation;
};
inline constexpr std::string_view constructorName = "constructor";

namespace detail {

struct Integer {
   U64 bits = 0;
   bool negative = false;
};

// A handle of an entity, seen through its base.
struct EntityHandle {
   PtrInterface const* entity = nullptr;
   bool constant = false;
};

[[noreturn]] KIV_EXPORT void throwArgumentMismatch(OperationName const& name, std::size_t index,
                                                   std::type_index expected, std::any const& argument);
// Empty when the argument holds nothing of the kind.
KIV_EXPORT std::optional<Integer> integerOf(std::any const& argument) noexcept;
KIV_EXPORT std::optional<double> realOf(std::any const& argument) noexcept;
KIV_EXPORT std::optional<std::string_view> textOf(std::any const& argument) noexcept;
KIV_EXPORT std::optional<EntityHandle> entityOf(std::any const& argument);

template <class T>
concept HasTextualForm = std::default_initializable<T> && requires(StrepReader& in, T& value) {
   strepParse(in, value);
};

template <class T>
struct IsPtr : std::false_type {};
template <class T>
struct IsPtr<Ptr<T>> : std::true_type {};

template <class T>
std::optional<Ptr<T>> pointerOf(std::any const& argument) {
   if (auto const* const same = std::any_cast<Ptr<std::remove_const_t<T>>>(&argument)) {
      return Ptr<T>(*same);
   }
   auto const handle = entityOf(argument);
   if (!handle || (handle->constant && !std::is_const_v<T>)) {
      return std::nullopt;
   }
   auto* const cast = dynamic_cast<T*>(const_cast<PtrInterface*>(handle->entity));
   return handle->entity == nullptr || cast != nullptr ? std::optional(Ptr<T>(cast)) : std::nullopt;
}

template <StrepInteger T>
T integerAs(Integer integer) {
   auto const value = static_cast<S64>(integer.bits);
   if (integer.negative ? !std::in_range<T>(value) : !std::in_range<T>(integer.bits)) {
      throwNumberRange();
   }
   return static_cast<T>(integer.bits);
}

// The argument as a T, if it can be one without being a T already.
template <class T>
std::optional<T> convertedArgument(std::any const& argument) {
   if constexpr (HasTextualForm<T>) {
      if (auto const* const text = std::any_cast<FromText>(&argument)) {
         return strepToValue<T>(text->text);
      }
   }
   if constexpr (IsPtr<T>::value) {
      return pointerOf<typename T::element_type>(argument);
   } else if constexpr (StrepInteger<T>) {
      auto const integer = integerOf(argument);
      return integer ? std::optional(integerAs<T>(*integer)) : std::nullopt;
   } else if constexpr (std::floating_point<T>) {
      auto const real = realOf(argument);
      return real ? std::optional(static_cast<T>(*real)) : std::nullopt;
   } else if constexpr (std::constructible_from<T, std::string_view>) {
      auto const text = textOf(argument);
      return text ? std::optional(T(*text)) : std::nullopt;
   } else {
      return std::nullopt;
   }
}

template <class T>
T argumentAs(std::any const& argument, OperationName const& name, std::size_t index) {
   if (auto const* const exact = std::any_cast<T>(&argument)) {
      return *exact;
   }
   if (auto converted = convertedArgument<T>(argument)) {
      return *std::move(converted);
   }
   throwArgumentMismatch(name, index, typeid(T), argument);
}

}  // namespace detail
}  // namespace Zam
