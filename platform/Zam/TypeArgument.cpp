#include "Zam/TypeArgument.h"

#include "Zam/CollectionView.h"

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

std::string placeOf(OperationName const& operation, ArgumentName const& name) {
   std::string place(operation.type);
   place.append(".").append(operation.operation).append(": argument ");
   return place.append(name.name.empty() ? std::to_string(name.index) : std::string(name.name));
}

// A text is shown, so that a wrong word is found again.
std::string argumentText(std::any const& argument) {
   if (auto const text = textOf(argument)) {
      return "text " + valueToStrep(*text);
   }
   if (std::any_cast<FromText>(&argument) != nullptr) {
      return "a text form, which it does not have";
   }
   if (auto const* const view = std::any_cast<CollectionView>(&argument)) {
      return "a view of a " + view->use().name();
   }
   return typeName(argument.type());
}

}  // namespace

void throwArgumentMismatch(OperationName const& operation, ArgumentName const& name, TypeUse const& expected,
                           std::any const& argument) {
   std::string const what = expected.kind == TypeUse::Kind::enumeration ? "an enumerator of " : "";
   throw TypeError(placeOf(operation, name) + ": expected " + what + expected.name() + ", found " +
                   argumentText(argument));
}

void throwArgumentText(OperationName const& operation, ArgumentName const& name, ParseError const& error) {
   throw ParseError(placeOf(operation, name) + ": " + error.what());
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
