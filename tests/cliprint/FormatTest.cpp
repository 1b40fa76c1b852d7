#include "cliprint/Format.h"

#include "Capture.h"
#include "Zam/String.h"
#include "cliprint/AttrInfo.h"

namespace {

using cliprint::Format;
using cliprint::textFormat;
using testing_cliprint::rendered;

struct Dotted {
   U32 value;
   static constexpr std::size_t maxTextLength = 15;
   std::size_t formatTo(char* to) const {
      return static_cast<std::size_t>(std::snprintf(to, maxTextLength, "%u.%u", value >> 16U, value & 0xffffU));
   }
};

template <class... Args>
bool fits(std::string_view text) {
   return Format<Args...>::fault(text) == nullptr;
}

template <class... Args>
std::string printed(Format<std::type_identity_t<Args>...> const& format, Args const&... args) {
   return rendered(textFormat, [&](auto& renderer) { renderer.template addFrills<Args...>(format, args...); });
}

// The C library is the oracle: same format, same arguments.
template <class... Args>
void expectAsSnprintf(Format<std::type_identity_t<Args>...> const& format, Args const&... args) {
   char expected[4000];
   int const length = std::snprintf(expected, sizeof expected, format.text(), args...);
   EXPECT_EQ(printed<Args...>(format, args...), std::string(expected, static_cast<std::size_t>(length)))
       << format.text();
}

TEST(Format, acceptsWhatFitsItsArguments) {
   EXPECT_TRUE((fits<>("") && fits<>("100%% of it%%")));
   EXPECT_TRUE((fits<char const*, std::string, std::string_view, Zam::String, Dotted, char[7]>("%s%s%s%-5s%.3s%20s")));
   EXPECT_TRUE((fits<int, U32, U8, std::int16_t, U64, long>("%d%u%x%d%lu%ld")));
   EXPECT_TRUE((fits<double, double, char>("%f%09.3f%c")));
   EXPECT_TRUE((fits<int, std::string_view>("\n%*s")));
}

// Whoever chose a text, it stays on its line and does nothing to a terminal, however it gets into the output.
TEST(Format, textsComeOutPlain) {
   auto const expectPrinted = [](std::string const& text, std::string const& plain) {
      EXPECT_EQ(printed("%s|%-1s|", text, text.c_str()), plain + "|" + plain + "|");
      EXPECT_EQ(rendered(textFormat,
                         [&](auto& renderer) {
                            cliprint::StringAttrInfo const name("name", renderer, text);
                            renderer.addAttributes("%s", name.getArg());
                            renderer.add(" ", "name", text);
                         }),
                plain + " " + text)
          << "what is added is added as it is";
   };
   for (unsigned byte = 1; byte < 256; ++byte) {
      char escaped[5];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
      std::string const plain = byte >= 0x20 && byte < 0x7f ? std::string(1, static_cast<char>(byte)) : escaped;
      for (std::size_t const length : {1U, 7U, 8U, 9U, 17U}) {
         std::string const before(length - 1, 'x');
         expectPrinted(before + static_cast<char>(byte), before + plain);
         expectPrinted(static_cast<char>(byte) + before, plain + before);
      }
   }
   for (auto const& [text, plain] : std::initializer_list<std::pair<std::string, std::string>>{
            {"caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80", "caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80"},
            {"\xc2\x9b", "\\xc2\\x9b"},
            {"\xe2\x80\xae", "\\xe2\\x80\\xae"},
            {"\xe2\x80\xa8", "\\xe2\\x80\\xa8"},
            {"\xed\xa0\x80", "\\xed\\xa0\\x80"},
            {"\xc0\xaf\xe2\x82", "\\xc0\\xaf\\xe2\\x82"}}) {
      expectPrinted(text, plain);
   }
}

template <class... Args>
void expectRefused(std::initializer_list<std::string_view> texts) {
   for (std::string_view const text : texts) {
      EXPECT_FALSE(fits<Args...>(text)) << text;
   }
}

TEST(Format, refusesTheRest) {
   std::string const tooLong(70000, 'x');
   expectRefused<>({"%s", std::string_view("\0%d", 3), tooLong});
   // Too many arguments, other types, a sign that would be lost, a half conversion, a width that none can have.
   expectRefused<int>({"x", "%%d", "%s", "%f", "%u", "%x", "%i", "%", "%-", "%5", "%.3d", "%1001d", "%*s"});
   expectRefused<U64>({"%u"});   // 64 bits without l
   expectRefused<U32>({"%lu"});  // l without 64 bits
   expectRefused<std::string_view>({"%ls", "%05s"});
   expectRefused<char>({"%d", "%.1c"});
   expectRefused<double>({"%.101f"});
   expectRefused<char const*>({"%d"});
   expectRefused<bool>({"%d"});
   expectRefused<float>({"%f"});
   expectRefused<int*>({"%d"});
   expectRefused<std::string_view, int>({"%*s"});  // the width comes first
   expectRefused<U32, std::string_view>({"%*s"});
   expectRefused<double, double, char>({"%f%-09.3f%c"});  // '-' with '0'
}

TEST(Format, printsAsTheCLibraryDoes) {
   expectAsSnprintf(" [%d/%u] ", 110, 20U);
   expectAsSnprintf("%*s|%*d|%-*d|%0*d|", -6, "ab", 6, 1, 6, 2, 6, -3);
   expectAsSnprintf("%%%s%%%%%s%%", "a%d", "%s");
   expectAsSnprintf("%.3s|%.0s|%9.2s|%-9.2s|", "abcdef", "abc", "xyz", "xyz");
   expectAsSnprintf("%c  |%5c|%-5c|", 'R', 'D', 'A');
   for (double const value : {0.0, -0.0, -2.5, 1e-7, 0.000001, -1e300, 0.5, 2.5e15}) {
      expectAsSnprintf("%f|%.0f|%.1f|%12.3f|%-12.2f|%020.4f|%.17f|", value, value, value, value, value, value, value);
   }
   double const max = std::numeric_limits<double>::max();
   expectAsSnprintf("%f|%.100f|%1000.100f", max, -max, max);
   double const infinity = std::numeric_limits<double>::infinity();
   expectAsSnprintf("%f|%08f|%-8f|%8f", infinity, -infinity, infinity, std::nan(""));
}

TEST(Format, printsRandomNumbersAsTheCLibraryDoes) {
   std::mt19937_64 random(20);
   for (int i = 0; i < 2000; ++i) {
      U64 const bits = random() >> (random() % 64);
      auto const s32 = static_cast<int>(bits);
      auto const u32 = static_cast<U32>(bits);
      auto const s64 = static_cast<S64>(i % 2 == 0 ? bits : ~bits);
      expectAsSnprintf("%d|%5d|%-7d|%012d|%*d", s32, s32, s32, s32, i % 40 - 20, s32);
      expectAsSnprintf("%u|%x|%08x|%-12u|%12x", u32, u32, u32, u32, u32);
      expectAsSnprintf("%ld|%24ld|%024ld|%lu|%lx", s64, s64, s64, bits, bits);
      double const real = std::ldexp(static_cast<double>(s64), static_cast<int>(random() % 200) - 130);
      expectAsSnprintf("%f|%.3f|%30.10f|%030.1f", real, real, real, real);
   }
}

TEST(Format, printsItsOwnKindsOfText) {
   EXPECT_EQ(printed("%s|%9s|%-9s|", Dotted{0x00010002}, Dotted{0x00030004}, Dotted{0x00050006}),
             "1.2|      3.4|5.6      |");
   EXPECT_EQ(printed("%s%s%s", std::string("a\0b", 3), Zam::String("c"), std::string_view()), "a\\x00bc");
   char const* const none = nullptr;
   EXPECT_EQ(printed("<%s%3s>", none, none), "<   >");
   EXPECT_EQ(printed("%d %ld", std::numeric_limits<U32>::max(), std::numeric_limits<U64>::max()),
             "4294967295 18446744073709551615")
       << "an unsigned value stays what it is under %d";
   EXPECT_EQ(printed("%d %u", S32{std::numeric_limits<S32>::min()}, U8{255}), "-2147483648 255");
   EXPECT_EQ(printed("%*s", std::numeric_limits<int>::min() / 65536, "x").size(), 32768U);
}

}  // namespace
