#pragma once

#include "Zam/Int.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>

// Text formats with printf's letters, checked against their arguments and taken apart by the compiler:
//
//    void addFrills(Format<std::type_identity_t<Args>...> format, Args const&... args);
//    addFrills(" [%d/%u] ", preference, metric);
//
// Conversions: %s texts and values with formatTo(), %d integers, %u and %x unsigned integers, %ld %lu %lx those of 64
// bits, %c a char, %f a double, %% itself. Before the letter: the flag '-' or '0' (numbers only), a width or '*' (an
// int argument, negative for '-'), and for %s and %f a precision. A conversion that does not fit its argument, one that
// does not exist, or a wrong number of arguments does not compile.
namespace cliprint {

// Part of a format: the literal text before a conversion, and the conversion. The letter is 0 after the last one.
struct Conversion {
   U16 literal = 0;
   U16 literalLength = 0;
   bool hasPercent = false;  // the literal text holds "%%"
   bool plain = true;        // neither width nor precision
   bool left = false;
   bool zero = false;
   bool widthIsArgument = false;
   char letter = '\0';
   U16 width = 0;
   U16 precision = 0;
   bool hasPrecision = false;
   bool isLong = false;
};

inline constexpr U16 maxFormatWidth = 1000;
inline constexpr U16 maxFormatPrecision = 100;

// A small value that writes its own text into memory of a known bound, as the network value types do.
template <class T>
concept SelfFormatting = requires(T const& value, char* to) {
   { value.formatTo(to) } -> std::convertible_to<std::size_t>;
   { T::maxTextLength } -> std::convertible_to<std::size_t>;
};

template <class T>
concept TextLike = std::convertible_to<T const&, std::string_view>;

// A text of the program's own, which may have lines and is printed as it is: no word of it was chosen by anybody else.
struct OwnText {
   std::string_view text;
   constexpr operator std::string_view() const noexcept { return text; }  // NOLINT(google-explicit-constructor)
};

// An argument that stands for another value in text, as attributes do.
template <class T>
concept StandsForText = requires(T const& value) {
   value.textValue();
};

enum class ArgKind : U8 { unsupported, text, character, real, s32, u32, s64, u64 };

template <class T>
consteval ArgKind argKind() {
   if constexpr (StandsForText<T>) {
      return argKind<std::remove_cvref_t<decltype(std::declval<T const&>().textValue())>>();
   } else if constexpr (TextLike<T> || SelfFormatting<T>) {
      return ArgKind::text;
   } else if constexpr (std::same_as<T, char>) {
      return ArgKind::character;
   } else if constexpr (std::same_as<T, double>) {
      return ArgKind::real;
   } else if constexpr (std::signed_integral<T>) {
      return sizeof(T) <= 4 ? ArgKind::s32 : ArgKind::s64;
   } else if constexpr (std::unsigned_integral<T> && !std::same_as<T, bool>) {
      return sizeof(T) <= 4 ? ArgKind::u32 : ArgKind::u64;
   } else {
      return ArgKind::unsupported;
   }
}

// Reads a format from left to right: one Conversion for each argument that it takes, then one with letter 0.
class FormatParser {
 public:
   constexpr explicit FormatParser(std::string_view text) : text_(text) {
      if (text.size() > 0xffff) {
         fault_ = "format too long";
      }
   }

   constexpr Conversion next() {
      if (widthBefore_) {
         widthBefore_ = false;
         return afterWidth_;
      }
      Conversion c;
      literal(c);
      if (at_ < text_.size()) {
         ++at_;
         flags(c);
         width(c);
         precision(c);
         letter(c);
         c.plain = c.width == 0 && !c.widthIsArgument && !c.hasPrecision;
      }
      return c.widthIsArgument ? widthArgument(c) : c;
   }
   constexpr char const* fault() const { return fault_; }

 private:
   constexpr char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
   constexpr bool take(char c) {
      bool const found = at_ < text_.size() && text_[at_] == c;
      at_ += found ? 1 : 0;
      return found;
   }
   constexpr U16 number(U16 max) {
      U16 value = 0;
      for (; peek() >= '0' && peek() <= '9'; ++at_) {
         value = static_cast<U16>(value * 10 + (peek() - '0'));
         if (value > max) {
            fault_ = "width or precision too large";
            value = 0;
         }
      }
      return value;
   }
   constexpr void literal(Conversion& c) {
      std::size_t const begin = at_;
      for (; at_ < text_.size(); ++at_) {
         if (text_[at_] != '%') {
            continue;
         }
         if (at_ + 1 == text_.size() || text_[at_ + 1] != '%') {
            break;
         }
         c.hasPercent = true;
         ++at_;
      }
      c.literal = static_cast<U16>(begin);
      c.literalLength = static_cast<U16>(at_ - begin);
   }
   constexpr void flags(Conversion& c) {
      c.left = take('-');
      c.zero = take('0');
      if (c.left && c.zero) {
         fault_ = "flags '-' and '0' together";
      }
   }
   constexpr void width(Conversion& c) {
      c.widthIsArgument = take('*');
      if (!c.widthIsArgument) {
         c.width = number(maxFormatWidth);
      }
   }
   constexpr void precision(Conversion& c) {
      c.hasPrecision = take('.');
      if (c.hasPrecision) {
         c.precision = number(maxFormatPrecision);
      }
   }
   constexpr void letter(Conversion& c) {
      c.isLong = take('l');
      c.letter = peek();
      bool const isNumber = c.letter == 'd' || c.letter == 'u' || c.letter == 'x';
      if (!isNumber && c.letter != 's' && c.letter != 'c' && c.letter != 'f') {
         fault_ = "unknown conversion";
      }
      if (c.isLong && !isNumber) {
         fault_ = "'l' without an integer";
      }
      if (c.zero && !isNumber && c.letter != 'f') {
         fault_ = "flag '0' without a number";
      }
      if (c.hasPrecision && c.letter != 's' && c.letter != 'f') {
         fault_ = "precision without a text or double";
      }
      ++at_;
   }
   // Splits "literal%*s" in two: the literal with the argument that gives the width, then the conversion itself.
   constexpr Conversion widthArgument(Conversion c) {
      Conversion before;
      before.literal = c.literal;
      before.literalLength = c.literalLength;
      before.hasPercent = c.hasPercent;
      before.letter = '*';
      c.literalLength = 0;
      c.hasPercent = false;
      afterWidth_ = c;
      widthBefore_ = true;
      return before;
   }

   std::string_view text_;
   std::size_t at_ = 0;
   char const* fault_ = nullptr;
   Conversion afterWidth_{};
   bool widthBefore_ = false;
};

// An unsigned argument prints its value under %d too; a signed one is no %u, where its sign would be lost.
constexpr bool conversionFits(Conversion const& c, ArgKind kind) {
   switch (kind) {
      case ArgKind::text:
         return c.letter == 's';
      case ArgKind::character:
         return c.letter == 'c';
      case ArgKind::real:
         return c.letter == 'f';
      case ArgKind::s32:
         return c.letter == '*' || (!c.isLong && c.letter == 'd');
      case ArgKind::u32:
         return !c.isLong && (c.letter == 'd' || c.letter == 'u' || c.letter == 'x');
      case ArgKind::s64:
         return c.isLong && c.letter == 'd';
      case ArgKind::u64:
         return c.isLong && (c.letter == 'd' || c.letter == 'u' || c.letter == 'x');
      case ArgKind::unsupported:
         break;
   }
   return false;
}

// Never defined: naming it in a constant expression stops the compiler with the fault in view.
void formatDoesNotFit(char const* fault);

enum class EmptyFormat : U8 { takesNothing, takesAnything };

template <EmptyFormat Empty, class... Args>
class BasicFormat {
 public:
   // What is wrong with a format for these arguments; null when nothing is.
   static constexpr char const* fault(std::string_view text) { return BasicFormat().parse(text); }

   template <std::size_t Size>
   consteval BasicFormat(char const (&text)[Size]) : text_(text) {  // NOLINT(google-explicit-constructor): a literal
      if (char const* const found = parse(std::string_view(text, Size - 1))) {
         formatDoesNotFit(found);
      }
   }

   constexpr char const* text() const { return text_; }
   constexpr bool empty() const { return sizeof...(Args) == 0 ? tail().literalLength == 0 : text_[0] == '\0'; }
   constexpr Conversion const& operator[](std::size_t argument) const { return plan_[argument]; }
   constexpr Conversion const& tail() const { return plan_[sizeof...(Args)]; }

 private:
   constexpr BasicFormat() = default;

   constexpr char const* parse(std::string_view text) {
      if (Empty == EmptyFormat::takesAnything && text.empty()) {
         return nullptr;
      }
      constexpr std::array<ArgKind, sizeof...(Args) + 1> kinds{argKind<std::remove_cv_t<Args>>()...};
      FormatParser parser(text);
      for (std::size_t i = 0; i < sizeof...(Args); ++i) {
         plan_[i] = parser.next();
         if (parser.fault() != nullptr) {
            return parser.fault();
         }
         if (plan_[i].letter == '\0') {
            return "more arguments than conversions";
         }
         if (!conversionFits(plan_[i], kinds[i])) {
            return "conversion does not fit its argument's type";
         }
      }
      plan_[sizeof...(Args)] = parser.next();
      if (plan_[sizeof...(Args)].letter != '\0') {
         return "more conversions than arguments";
      }
      return parser.fault();
   }

   char const* text_ = "";
   std::array<Conversion, sizeof...(Args) + 1> plan_{};
};

template <class... Args>
using Format = BasicFormat<EmptyFormat::takesNothing, Args...>;

}  // namespace cliprint
