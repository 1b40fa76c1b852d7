#pragma once

#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/Strep.h"
#include "Zam/TypeUse.h"

#include <any>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// Arguments of the runtime's operations, which arrive as std::any and are converted to what the operation takes:
// any integer to an integer type that can hold it, text to a string type, nullptr and handles of more derived or less
// constant entities to a Ptr, a view of a collection or its Elements to that collection, an explicit fromText(...) to
// every type that has a textual form, and DefaultValue to every type that has a default.
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

// An argument that is left out: the default of its type or, of a described value, that of its attribute.
struct DefaultValue {};

// An argument that is a collection, by its elements; the value of a set's element is empty, the key in a list its
// place.
struct Elements {
   std::vector<std::pair<std::any, std::any>> elements;
};

// Which operation is being called, for messages.
struct OperationName {
   std::string_view type;
   std::string_view operation;
};
inline constexpr std::string_view constructorName = "constructor";

// Which of its arguments: by name where there is one.
struct ArgumentName {
   std::size_t index = 0;
   std::string_view name{};
};

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

// Messages name the operation, the argument, what it must be and what it is.
[[noreturn]] KIV_EXPORT void throwArgumentMismatch(OperationName const& operation, ArgumentName const& name,
                                                   TypeUse const& expected, std::any const& argument);
[[noreturn]] KIV_EXPORT void throwArgumentText(OperationName const& operation, ArgumentName const& name,
                                               ParseError const& error);
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

// What an argument that is a view of an M shows; null for any other.
template <Collection M>
M const* seenIn(std::any const& argument);
template <Collection M>
M collectionOf(Elements const& elements);

// The argument as a T, if it can be one without being a T already.
template <class T>
std::optional<T> convertedArgument(std::any const& argument) {
   if constexpr (std::default_initializable<T>) {
      if (std::any_cast<DefaultValue>(&argument) != nullptr) {
         return T{};
      }
   }
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
   } else if constexpr (Collection<T>) {
      if (auto const* const given = std::any_cast<Elements>(&argument)) {
         return collectionOf<T>(*given);
      }
      auto const* const seen = seenIn<T>(argument);
      return seen != nullptr ? std::optional(*seen) : std::nullopt;
   } else if constexpr (std::constructible_from<T, std::string_view>) {
      auto const text = textOf(argument);
      return text ? std::optional(T(*text)) : std::nullopt;
   } else {
      return std::nullopt;
   }
}

template <class T>
T argumentAs(std::any const& argument, OperationName const& operation, ArgumentName const& name) {
   if (auto const* const exact = std::any_cast<T>(&argument)) {
      return *exact;
   }
   try {
      if (auto converted = convertedArgument<T>(argument)) {
         return *std::move(converted);
      }
   } catch (ParseError const& error) {
      throwArgumentText(operation, name, error);
   }
   throwArgumentMismatch(operation, name, TypeUse::of<T>(), argument);
}

}  // namespace detail
}  // namespace Zam
