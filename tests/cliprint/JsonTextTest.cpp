#include "cliprint/JsonText.h"

#include "Capture.h"
#include "support/StrictJson.h"

namespace {

using testing_cliprint::CapturedFile;
using testsupport::StrictJson;

template <class Value>
std::string json(Value const& value, std::size_t bufsize = cliprint::globalBufsize) {
   CapturedFile file;
   cliprint::CliPrintBuffer buffer(file.fd(), bufsize);
   cliprint::jsonAppend(buffer, value);
   buffer.ioflush();
   return file.text();
}

std::string const replacement = "\xef\xbf\xbd";

std::string inQuotes(std::string_view text) {
   return json(text);
}

TEST(JsonText, escapesInTheShortestForm) {
   for (auto const& [text, expected] : std::initializer_list<std::pair<std::string_view, std::string_view>>{
            {"", R"("")"},
            {"say \"hi\" a\\b/", R"("say \"hi\" a\\b/")"},
            {"\b\t\n\f\r", R"("\b\t\n\f\r")"},
            {{"\0\x01\x0b\x0e\x1b\x1f\x7f", 7}, R"("\u0000\u0001\u000b\u000e\u001b\u001f\u007f")"},
            {"\xc2\x80\xc2\x9f\xc2\xa0\xd8\x9c\xe2\x80\xae\xe2\x80\xa8",  // C1, and what turns or ends a line
             "\"\\u0080\\u009f\xc2\xa0\\u061c\\u202e\\u2028\""},
            {"\xc3\xa9\xf0\x9f\x98\x80\xef\xbf\xbf\xf4\x8f\xbf\xbf\xee\x80\x80\xed\x9f\xbf",
             "\"\xc3\xa9\xf0\x9f\x98\x80\xef\xbf\xbf\xf4\x8f\xbf\xbf\xee\x80\x80\xed\x9f\xbf\""}}) {
      EXPECT_EQ(inQuotes(text), expected);
   }
}

TEST(JsonText, replacesEachByteOfIllFormedUtf8) {
   // Alone, overlong, surrogates, too large, cut off.
   for (std::string_view const bytes :
        {"\x80", "\xbf", "\xc0\xaf", "\xc1\xbf", "\xe0\x9f\xbf", "\xf0\x8f\xbf\xbf", "\xed\xa0\x80", "\xed\xbf\xbf",
         "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xfe", "\xff", "\xc3", "\xe2\x82", "\xf0\x9f\x98"}) {
      std::string expected = "\"";
      for (std::size_t i = 0; i < bytes.size(); ++i) {
         expected += replacement;
      }
      EXPECT_EQ(inQuotes(bytes), expected + '"');
   }
   EXPECT_EQ(inQuotes("\xe2\x82\""), '"' + replacement + replacement + "\\\"\"");
   EXPECT_EQ(inQuotes("\xc3\xc3\xa9"), '"' + replacement + "\xc3\xa9\"");
}

TEST(JsonText, everyByteAtEveryPlaceOfAWord) {
   for (unsigned byte = 0; byte < 256; ++byte) {
      for (std::size_t const length : {1U, 7U, 8U, 9U, 17U}) {
         for (std::size_t at = 0; at < length; ++at) {
            std::string text(length, 'x');
            text[at] = static_cast<char>(byte);
            std::string const written = inQuotes(text);
            auto const value = StrictJson::parse(written);
            ASSERT_TRUE(value && written.find('\x7f') == std::string::npos) << byte << " at " << at;
            std::string const expected = text.substr(0, at) + replacement + text.substr(at + 1);
            ASSERT_EQ(value->text, byte < 0x80 ? text : expected);
         }
      }
   }
}

TEST(JsonText, randomBytesAreAlwaysAValidString) {
   std::mt19937 random(7);
   for (int i = 0; i < 400; ++i) {
      std::string text(random() % 2000, '\0');
      bool const ascii = i % 3 == 0;
      for (char& c : text) {
         c = static_cast<char>(random() % (ascii ? 128 : 256));
      }
      std::string const whole = json(std::string_view(text));
      auto const value = StrictJson::parse(whole);
      ASSERT_TRUE(value);
      ASSERT_EQ(json(std::string_view(text), 1), whole) << "pieces through the smallest buffer";
      if (StrictJson::isUtf8(text)) {
         ASSERT_EQ(value->text, text);
      }
   }
}

TEST(JsonText, numbersAndWords) {
   EXPECT_EQ(json(false), "false");
   EXPECT_EQ(json(std::numeric_limits<S64>::min()), "-9223372036854775808");
   EXPECT_EQ(json(std::numeric_limits<U64>::max()), "18446744073709551615");
   EXPECT_EQ(json(0.1), "0.1");
   EXPECT_EQ(json(std::nan("")), "null");
   EXPECT_EQ(json(-std::numeric_limits<double>::infinity()), "null");
   std::mt19937_64 random(3);
   for (int i = 0; i < 3000; ++i) {
      auto const value = std::bit_cast<double>(random());
      if (std::isfinite(value)) {
         std::string const text = json(value, 1);
         bool const isWhole = text.find_first_of(".e") == std::string::npos;  // of which the reader takes 64 bits only
         ASSERT_TRUE(StrictJson::parse(isWhole ? text + ".0" : text)) << text;
         ASSERT_EQ(std::strtod(text.c_str(), nullptr), value);
      }
   }
}

}  // namespace
