#pragma once

#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/Int.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <utility>

// The textual form of a value, a Python literal: 42, True, None, 'text'. A type of another namespace joins in with two
// functions beside it, strepAppend(std::string&, T const&) and strepParse(StrepReader&, T&). Parsing accepts exactly
// what is written: other text is a ParseError, a number beyond its type a RangeError.
namespace Zam {

// What is left of a text that is being parsed. Every operation takes its part from the front or throws.
class KIV_EXPORT StrepReader {
 public:
   explicit StrepReader(std::string_view text) noexcept : rest_(text), size_(text.size()) {}

   std::string_view rest() const noexcept { return rest_; }
   void expect(std::string_view literal);
   // Whether the literal was next; takes it when it was.
   bool accept(std::string_view literal) noexcept;
   void expectEnd() const;

   // A quoted string, unescaped.
   std::string quoted();
   U64 number();
   S64 signedNumber();
   double real();
   // The letters, digits and underscores that are next.
   std::string_view acceptWord() noexcept;

   // Names what was expected and the place in the text.
   [[noreturn]] void fail(std::string_view expected) const;
   [[noreturn]] void fail(ParseError const& inner) const;
   [[noreturn]] void failEnumerator(std::type_index enumeration) const;

 private:
   std::string_view take(std::size_t count) noexcept;

   std::string_view rest_;
   std::size_t size_;
};

// Any bytes, in single quotes; what is not printable ASCII is escaped.
KIV_EXPORT void strepAppendQuoted(std::string& out, std::string_view text);
KIV_EXPORT void strepAppendNumber(std::string& out, U64 value);
KIV_EXPORT void strepAppendNumber(std::string& out, S64 value);
[[noreturn]] KIV_EXPORT void throwNumberRange();

template <class T>
concept StrepInteger =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t> &&
    !std::same_as<T, char8_t> && !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

template <StrepInteger T>
void strepAppend(std::string& out, T value) {
   strepAppendNumber(out, static_cast<std::conditional_t<std::unsigned_integral<T>, U64, S64>>(value));
}

template <StrepInteger T>
void strepParse(StrepReader& in, T& value) {
   auto const number = [&in] {
      if constexpr (std::unsigned_integral<T>) {
         return in.number();
      } else {
         return in.signedNumber();
      }
   }();
   if (!std::in_range<T>(number)) {
      throwNumberRange();
   }
   value = static_cast<T>(number);
}

// A template, so that no pointer slips in as a bool.
template <std::same_as<bool> T>
void strepAppend(std::string& out, T value) {
   out += value ? "True" : "False";
}
template <std::same_as<bool> T>
void strepParse(StrepReader& in, T& value) {
   value = in.accept("True");
   if (!value && !in.accept("False")) {
      in.fail("True or False");
   }
}

KIV_EXPORT void strepAppend(std::string& out, double value);
KIV_EXPORT void strepParse(StrepReader& in, double& value);

inline void strepAppend(std::string& out, std::string_view value) {
   strepAppendQuoted(out, value);
}
inline void strepParse(StrepReader& in, std::string& value) {
   value = in.quoted();
}

template <U32 MaxLength>
void strepAppend(std::string& out, BoundedString<MaxLength> const& value) {
   strepAppendQuoted(out, value.bytes());
}
template <U32 MaxLength>
void strepParse(StrepReader& in, BoundedString<MaxLength>& value) {
   value = in.quoted();
}

// An enumeration that is registered with its names prints as its value's name. Beside it stands
//    constexpr auto zamEnumerators(E) { return std::to_array<Zam::Enumerator<E>>({{E::first, "first"}, ...}); }
// A value without a name prints as its number, and is read from that if the enumeration is one that shared tables hold,
// where damage can make any number of it; such a one has beside it
//    constexpr void zamReadFromTables(E) {}
template <class E>
struct Enumerator {
   E value;
   std::string_view name;
};

template <class E>
concept NamedEnum = std::is_enum_v<E> && requires(E e) {
   zamEnumerators(e);
};

template <class E>
concept TableEnum = NamedEnum<E> && requires(E e) {
   zamReadFromTables(e);
};

// Empty for a value without a name.
template <NamedEnum E>
constexpr std::string_view enumName(E value) noexcept {
   for (auto const& [known, name] : zamEnumerators(E{})) {
      if (known == value) {
         return name;
      }
   }
   return {};
}

template <NamedEnum E>
void strepAppend(std::string& out, E value) {
   if (auto const name = enumName(value); !name.empty()) {
      out += name;
   } else {
      strepAppend(out, static_cast<std::underlying_type_t<E>>(value));
   }
}

template <NamedEnum E>
void strepParse(StrepReader& in, E& value) {
   StrepReader ahead = in;
   auto const word = ahead.acceptWord();
   for (auto const& [known, name] : zamEnumerators(E{})) {
      if (name == word) {
         in = ahead;
         value = known;
         return;
      }
   }
   if constexpr (TableEnum<E>) {
      auto number = std::underlying_type_t<E>();
      ahead = in;
      if (word.empty() || (word[0] >= '0' && word[0] <= '9')) {
         strepParse(ahead, number);
         if (enumName(static_cast<E>(number)).empty()) {
            in = ahead;
            value = static_cast<E>(number);
            return;
         }
      }
   }
   in.failEnumerator(typeid(E));
}

// Only the null handle can be read back: text does not bring an entity to life.
template <class T>
void strepAppend(std::string& out, Ptr<T> const& value) {
   if (value) {
      out.append("Ptr('").append(value->fwkType()).append("')");
   } else {
      out += "None";
   }
}
template <class T>
void strepParse(StrepReader& in, Ptr<T>& value) {
   in.expect("None");
   value = nullptr;
}

template <class T>
std::string valueToStrep(T const& value) {
   std::string out;
   strepAppend(out, value);
   return out;
}

// The whole text is the value's form.
template <class T>
T strepToValue(std::string_view text) {
   StrepReader in(text);
   T value{};
   strepParse(in, value);
   in.expectEnd();
   return value;
}

}  // namespace Zam
