#include "Zam/Strep.h"
#include "support/Testing.h"

namespace TestTypes {

enum class Colour : S32 { red = -1, green = 2 };
constexpr auto zamEnumerators(Colour) {
   return std::to_array<Zam::Enumerator<Colour>>({{Colour::red, "red"}, {Colour::green, "green"}});
}
constexpr void zamReadFromTables(Colour) {}
enum class Mode : U8 { off };
constexpr auto zamEnumerators(Mode) {
   return std::to_array<Zam::Enumerator<Mode>>({{Mode::off, "off"}});
}

}  // namespace TestTypes

namespace {

using TestTypes::Colour;
using Zam::strepToValue;
using Zam::valueToStrep;

template <class T>
void expectMalformed(std::initializer_list<std::string_view> texts) {
   for (auto const text : texts) {
      EXPECT_THROW(strepToValue<T>(text), Zam::ParseError) << text;
   }
}

template <class T>
class StrepInteger : public testing::Test {};
using Integers = testing::Types<U8, signed char, U16, short, U32, S32, U64, S64>;
TYPED_TEST_SUITE(StrepInteger, Integers);

TYPED_TEST(StrepInteger, RoundTripsItsLimitsAndRefusesTheNextNumber) {
   using Limits = std::numeric_limits<TypeParam>;
   for (auto const value : {Limits::min(), TypeParam(0), TypeParam(65), Limits::max()}) {
      EXPECT_EQ(valueToStrep(value), std::to_string(value));
      EXPECT_EQ(strepToValue<TypeParam>(valueToStrep(value)), value);
   }
   // One more: no limit of an integer ends in 9.
   auto beyond = std::to_string(Limits::max());
   ++beyond.back();
   EXPECT_THROW(strepToValue<TypeParam>(beyond), Zam::RangeError);
   EXPECT_THROW(strepToValue<TypeParam>("99999999999999999999999999"), Zam::RangeError);
   if (std::is_signed_v<TypeParam>) {
      auto below = std::to_string(Limits::min());
      ++below.back();
      EXPECT_THROW(strepToValue<TypeParam>(below), Zam::RangeError);
   } else {
      EXPECT_THROW(strepToValue<TypeParam>("-1"), Zam::ParseError);
   }
}

TYPED_TEST(StrepInteger, AcceptsOnlyWhatIsWritten) {
   expectMalformed<TypeParam>({"", " 1", "1 ", "+1", "01", "00", "-0", "-", "0x1", "1.0", "1L", "--1", "True"});
}

TEST(Strep, Booleans) {
   EXPECT_EQ(valueToStrep(true), "True");
   EXPECT_FALSE(strepToValue<bool>("False"));
   expectMalformed<bool>({"", "true", "1", "TrueFalse", "Fals"});
}

TEST(Strep, DoublesRoundTripExactly) {
   EXPECT_EQ(valueToStrep(1.0), "1.0");
   EXPECT_EQ(valueToStrep(0.1), "0.1");
   EXPECT_EQ(valueToStrep(-0.0), "-0.0");
   EXPECT_TRUE(std::isnan(strepToValue<double>("nan")));
   EXPECT_EQ(strepToValue<double>("-inf"), -std::numeric_limits<double>::infinity());
   std::mt19937_64 random(3);
   for (int i = 0; i != 20000; ++i) {
      auto const value = std::bit_cast<double>(random());
      auto const back = strepToValue<double>(valueToStrep(value));
      EXPECT_TRUE(std::isnan(value) ? std::isnan(back) : std::bit_cast<U64>(back) == std::bit_cast<U64>(value));
   }
   expectMalformed<double>({"", "1", "1.", ".5", "1.00", "1e999", "-nan", "infinity", "0.1 "});
}

TEST(Strep, StringsRoundTripEveryByte) {
   std::string every;
   for (int byte = 0; byte != 256; ++byte) {
      every += static_cast<char>(byte);
   }
   auto const text = valueToStrep(Zam::String(every));
   EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; }));
   EXPECT_EQ(strepToValue<Zam::String>(text).bytes(), every);
   EXPECT_EQ(valueToStrep(std::string("a'b\\c\n\x01\xc3")), R"('a\'b\\c\n\x01\xc3')");
}

TEST(Strep, RandomTextsNeverParseToSomethingThatIsWrittenDifferently) {
   constexpr std::string_view alphabet = "'\\nxt0af\n\xff";
   std::mt19937 random(5);
   int parsed = 0;
   for (int i = 0; i != 20000; ++i) {
      std::string text = "'";
      for (auto length = random() % 6; length != 0; --length) {
         text += alphabet[random() % alphabet.size()];
      }
      text += "'";
      try {
         EXPECT_EQ(valueToStrep(strepToValue<std::string>(text)), text);
         ++parsed;
      } catch (Zam::ParseError const&) {
      }
   }
   EXPECT_GT(parsed, 500);
}

TEST(Strep, HostileStrings) {
   expectMalformed<std::string>({"", "'", "'a", "a'", "'a'b'", "'\\'", "'\\x'", "'\\x4'", "'\\x41'", "'\\xZZ'", "'\\q'",
                                 "'\\xFF'", "'\n'", "\"a\"", "'a' "});
   EXPECT_THROW(strepToValue<Zam::BoundedString<2>>("'abc'"), Zam::RangeError);
}

TEST(Strep, EnumeratorsPrintAsTheirNames) {
   EXPECT_EQ(valueToStrep(Colour::red), "red");
   EXPECT_EQ(strepToValue<Colour>("green"), Colour::green);
   EXPECT_EQ(valueToStrep(Colour{-7}), "-7");
   EXPECT_EQ(strepToValue<Colour>("-7"), Colour{-7});
   expectMalformed<Colour>({"", "blue", "gree", "greens", "2", "-1", "'red'"});
   EXPECT_THROW(strepToValue<Colour>("4000000000"), Zam::RangeError);
   EXPECT_EQ(strepToValue<TestTypes::Mode>("off"), TestTypes::Mode::off);
   expectMalformed<TestTypes::Mode>({"", "7", "0", "on", "-1"});
}

}  // namespace
