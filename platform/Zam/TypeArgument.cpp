#include "Zam/TypeArgument.h"

namespace Zam {

TypeError::~TypeError() = default;

namespace detail {

namespace {

// Calls function(T const&) for the first of the types that the argument holds.
template <class... Types, class Function>
auto firstHeld(std::any const& argument, Function const& function) {
   using Result = std::common_type_t<std::invoke_result_t<Function, Types const&>...>;
   std::optional<Result> result;
   static_cast<void>(
       ((std::any_cast<Types>(&argument) != nullptr && (result = function(*std::any_cast<Types>(&argument)), true)) ||
        ...));
   return result;
}

}  // namespace

void throwArgumentMismatch(OperationName const& name, std::size_t index, std::type_index expected,
                           std::any const& argument) {
   std::string message(name.type);
   message.append(".").append(name.operation).append(": argument ").append(std::to_string(index));
   message.append(" must be ").append(typeName(expected)).append(", not ").append(typeName(argument.type()));
   throw TypeError(message);
}

std::optional<Integer> integerOf(std::any const& argument) noexcept {
   return firstHeld<int, unsigned, long, unsigned long, long long, unsigned long long, short, unsigned short,
                    signed char, unsigned char>(argument, [](auto value) {
      return Integer{static_cast<U64>(value), std::cmp_less(value, 0)};
   });
}

std::optional<double> realOf(std::any const& argument) noexcept {
   if (auto const real = firstHeld<double, float>(argument, [](double value) { return value; })) {
      return real;
   }
   auto const integer = integerOf(argument);
   if (!integer) {
      return std::nullopt;
   }
   return integer->negative ? static_cast<double>(static_cast<S64>(integer->bits)) : static_cast<double>(integer->bits);
}

std::optional<std::string_view> textOf(std::any const& argument) noexcept {
   return firstHeld<std::string, std::string_view, char const*, char*, String, BoundedString<100>>(
       argument, [](std::string_view text) { return text; });
}

}  // namespace detail
}  // namespace Zam
