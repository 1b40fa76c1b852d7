#include "cliprint/RendererV2.h"

#include "Capture.h"
#include "cliprint/JsonScope.h"
#include "support/StrictJson.h"

namespace {

using cliprint::Attr32Info;
using cliprint::Attr64Info;
using cliprint::BoolAttrInfo;
using cliprint::JsonScope;
using cliprint::modelFormat;
using cliprint::RendererV2;
using cliprint::S32AttrInfo;
using cliprint::StringAttrInfo;
using cliprint::textFormat;
using testing_cliprint::OnRenderer;
using testing_cliprint::rendered;
using testsupport::StrictJson;

struct Operation {
   std::string_view what;
   std::function<void(RendererV2&)> walk;
   std::string_view text;
   std::string_view model;  // between the outermost braces
};

Operation const operations[] = {
    {"a group",
     [](RendererV2& r) {
        r.addAttributes(" [%d/%u] ", S32AttrInfo("preference", r, -1).getArg(), Attr32Info("metric", r, 20U).getArg());
     },
     " [-1/20] ", R"("preference":-1,"metric":20)"},
    {"every kind, which follows the type and not the conversion",
     [](RendererV2& r) {
        using Limits = std::numeric_limits<S64>;
        r.addAttributes("%s %d %u|", BoolAttrInfo("yes", r, true).getArg(),
                        S32AttrInfo("low", r, std::numeric_limits<S32>::min()).getArg(),
                        Attr32Info("high", r, std::numeric_limits<U32>::max()).getArg());
        r.addAttributes("%ld %lu|%.2f", cliprint::S64AttrInfo("s64", r, Limits::min()).getArg(),
                        Attr64Info("u64", r, std::numeric_limits<U64>::max()).getArg(),
                        cliprint::DoubleAttrInfo("seconds", r, 0.125).getArg());
     },
     "True -2147483648 4294967295|-9223372036854775808 18446744073709551615|0.12",
     R"("yes":true,"low":-2147483648,"high":4294967295,"s64":-9223372036854775808,)"
     R"("u64":18446744073709551615,"seconds":0.125)"},
    {"model only", [](RendererV2& r) { r.addAttributes("", BoolAttrInfo("a", r, true).getArg()); }, "", R"("a":true)"},
    {"add", [](RendererV2& r) { r.add(" (", "description", "\"up\""); }, " (\"up\"", R"("description":"\"up\"")"},
    {"simple entries",
     [](RendererV2& r) {
        r.startSimpleDictEntry(S32AttrInfo("id", r, -7));
        r.addAttributes("%s\n", StringAttrInfo("name", r, "seven").getArg());
        r.endSimpleDictEntry();
        r.startSimpleDictEntry(StringAttrInfo("type", r, "a\"b"));
        r.addAttributes("%12u\n", Attr32Info("count", r, 3U).getArg());
        r.endSimpleDictEntry();
        r.addAttributes("", BoolAttrInfo("last", r, true).getArg());
     },
     "seven\n           3\n", R"("-7":"seven","a\"b":3,"last":true)"},
    {"empty ones",
     [](RendererV2& r) {
        auto const entry = JsonScope::dictEntry(r, S32AttrInfo("id", r, -1));
        auto list = JsonScope::list(r, "labels");
        list.close();
        auto const empty = JsonScope::object(r, "empty");
     },
     "", R"("-1":{"labels":[],"empty":{}})"},
    {"bare list elements",
     [](RendererV2& r) {
        auto const names = JsonScope::list(r, "names");
        r.add("", "", "a");
        r.add(" ", "", "b");
        if (r.isModel()) {
           r.writeQuotedString("c\n");
        }
     },
     "a b", R"("names":["a","b","c\n"])"},
};

TEST(RendererV2, everyOperationInBothFormats) {
   for (Operation const& c : operations) {
      EXPECT_EQ(rendered(textFormat, c.walk), c.text) << c.what;
      std::string const model = rendered(modelFormat, c.walk);
      EXPECT_EQ(model, "{" + std::string(c.model) + "}\n") << c.what;
      EXPECT_TRUE(StrictJson::parse(model)) << c.what;
   }
}

TEST(RendererV2, returnsTheCharactersWritten) {
   auto const written = [](cliprint::OutputFormat format, int text, int model, int line) {
      auto const walk = [=](RendererV2& r) {
         StringAttrInfo const code("code", r, "S");
         EXPECT_EQ(r.addAttributes("%-5s", code.getArg()), text);
         EXPECT_EQ(r.addAttributes("", code.getArg()), model);
         EXPECT_EQ(r.addArgs("%s\n", std::string(3000, 'x')), line);
      };
      rendered(format, walk, 1);
   };
   written(textFormat, 5, 0, 3001);
   written(modelFormat, 10, 11, 0);
}

// A walk with many sizes of everything, by a seed.
void randomWalk(RendererV2& r, unsigned seed) {
   std::mt19937 random(seed);
   std::function<void(int)> const inside = [&](int depth) {
      U32 const count = static_cast<U32>(random() % 6);
      for (U32 i = 0; i < count; ++i) {
         std::string const text(random() % (random() % 20 == 0 ? 3000 : 30), static_cast<char>(random() % 256));
         switch (random() % (depth == 0 ? 2 : 4)) {
            case 0:
               r.startSimpleDictEntry(Attr32Info("k", r, i));
               r.addAttributes("%s\n", StringAttrInfo("v", r, text).getArg());
               r.endSimpleDictEntry();
               break;
            case 1:
               r.add("-", std::to_string(i), text);
               break;
            case 2: {
               auto const entry = JsonScope::dictEntry(r, Attr32Info("k", r, i));
               inside(depth - 1);
               break;
            }
            default: {
               auto const list = JsonScope::list(r, std::to_string(i));
               auto const element = JsonScope::listEntry(r);
               inside(depth - 1);
            }
         }
         if (r.fullness() > 66) {
            r.ioflush();
         }
      }
   };
   inside(7);
}

TEST(RendererV2, outputInPiecesIsTheSameAndAlwaysValid) {
   for (unsigned seed = 0; seed < 100; ++seed) {
      for (auto const format : {textFormat, modelFormat}) {
         auto const walk = [seed](RendererV2& r) { randomWalk(r, seed); };
         std::string const whole = rendered(format, walk, 1U << 24U);
         EXPECT_EQ(rendered(format, walk, 1), whole);
         EXPECT_EQ(rendered(format, walk, 4096), whole);
         if (format == modelFormat) {
            ASSERT_TRUE(StrictJson::parse(whole)) << seed;
         }
      }
   }
}

TEST(RendererV2, withoutTheDocumentTheCallerComposes) {
   OnRenderer on(modelFormat, false);
   auto& [file, buffer, renderer] = on;
   EXPECT_EQ(renderer.fwkType(), "cliprint::RendererV2");
   buffer.append('[');
   for (U32 const value : {1U, 2U}) {
      auto const entry = JsonScope::listEntry(renderer);
      renderer.addAttributes("", Attr32Info("v", renderer, value).getArg());
   }
   renderer.writeQuotedString("end");
   buffer.append(']');
   renderer.ioflush();
   EXPECT_EQ(file.text(), R"([{"v":1},{"v":2},"end"])");
}

TEST(RendererV2, aScopeLeavesAnUnwoundOutputCutOff) {
   OnRenderer on(modelFormat);
   auto const failing = [&] {
      auto const outer = JsonScope::object(on.renderer, "a");
      auto const inner = JsonScope::list(on.renderer, "b");
      throw std::runtime_error("broken table");
   };
   EXPECT_THROW(failing(), std::runtime_error);
   on.renderer.ioflush();
   EXPECT_EQ(on.file.text(), R"({"a":{"b":[)");
}

TEST(RendererV2, fullnessIsPerCent) {
   OnRenderer on(textFormat, true, 2000);
   for (auto const& [columns, fullness] : {std::pair(1320, 66U), {20, 67U}, {660, 100U}}) {
      on.renderer.addFrills("%*s", columns, "");
      EXPECT_EQ(on.renderer.fullness(), fullness);
   }
   on.renderer.ioflush();
   EXPECT_EQ(on.renderer.fullness(), 0U);
}

TEST(AttrInfo, textsOfEveryLengthAroundTheInlineBuffer) {
   OnRenderer on(textFormat);
   for (std::size_t const length : {0U, 1U, 98U, 99U, 100U, 101U, 5000U}) {
      std::string text(length, 'x');
      StringAttrInfo attr("name", on.renderer, text);
      EXPECT_EQ(attr.isOnHeap(), length >= 100) << length;
      text.assign(length, 'y');
      EXPECT_EQ(attr.getArg().value, std::string(length, 'x')) << "a copy of its own";
      attr.setValue(text);
      EXPECT_EQ(attr.getArg().value, text) << "set again, over the old one";
      attr.reset();
      EXPECT_FALSE(attr.hasValue() || attr.isOnHeap());
      attr.setValue("short");
      EXPECT_EQ(attr.getArg().value, "short");
   }
}

// A signed value must not slip into an unsigned attribute, nor a wide one into a narrow.
template <class Attr, class Value>
concept Takes = requires(Attr& attr, Value value) {
   attr.setValue(value);
};
static_assert(Takes<cliprint::Attr32Info, U8> && Takes<cliprint::Attr32Info, U32>);
static_assert(!Takes<cliprint::Attr32Info, S32> && !Takes<cliprint::Attr32Info, U64>);
static_assert(Takes<cliprint::Attr64Info, U64> && !Takes<cliprint::Attr64Info, S64>);
static_assert(
    !std::is_constructible_v<cliprint::BoolAttrInfo, cliprint::AttrName, cliprint::Renderer const&, char const*>);
static_assert(!std::is_copy_constructible_v<StringAttrInfo> && !std::is_copy_assignable_v<cliprint::Attr32Info>);

}  // namespace
