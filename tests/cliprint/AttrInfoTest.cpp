#include "cliprint/AttrInfo.h"

#include "Capture.h"
#include "Zam/String.h"
#include "cliprint/RendererV2.h"

namespace {

using namespace std::string_view_literals;
using cliprint::modelFormat;
using cliprint::Renderer;
using cliprint::StringAttrInfo;
using cliprint::textFormat;
using testing_cliprint::OnRenderer;
using testing_cliprint::rendered;

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

TEST(AttrInfo, takesTextsOfManyTypes) {
   OnRenderer on(textFormat);
   EXPECT_EQ(StringAttrInfo("a", on.renderer, Zam::String("zam")).getArg().value, "zam");
   EXPECT_EQ(StringAttrInfo("a", on.renderer, "nul\0inside"sv).getArg().value, "nul\0inside"sv);
}

void everyKind(cliprint::RendererV2& renderer) {
   renderer.addAttributes("%s|", cliprint::BoolAttrInfo("yes", renderer, true).getArg());
   renderer.addAttributes("%d %u|", cliprint::S32AttrInfo("low", renderer, std::numeric_limits<S32>::min()).getArg(),
                          cliprint::Attr32Info("high", renderer, std::numeric_limits<U32>::max()).getArg());
   renderer.addAttributes("%ld %lu|", cliprint::S64AttrInfo("s64", renderer, std::numeric_limits<S64>::min()).getArg(),
                          cliprint::Attr64Info("u64", renderer, std::numeric_limits<U64>::max()).getArg());
   renderer.addAttributes("%.2f", cliprint::DoubleAttrInfo("seconds", renderer, 0.125).getArg());
}

TEST(AttrInfo, modelKindFollowsTheTypeNotTheConversion) {
   EXPECT_EQ(rendered(textFormat, everyKind),
             "True|-2147483648 4294967295|-9223372036854775808 18446744073709551615|0.12");
   EXPECT_EQ(rendered(modelFormat, everyKind),
             R"({"yes":true,"low":-2147483648,"high":4294967295,"s64":-9223372036854775808,)"
             R"("u64":18446744073709551615,"seconds":0.125})"
             "\n");
}

// A signed value must not slip into an unsigned attribute, nor a wide one into a narrow.
template <class Attr, class Value>
concept Takes = requires(Attr& attr, Value value) {
   attr.setValue(value);
};
static_assert(Takes<cliprint::Attr32Info, U8> && Takes<cliprint::Attr32Info, U32>);
static_assert(!Takes<cliprint::Attr32Info, S32> && !Takes<cliprint::Attr32Info, U64>);
static_assert(Takes<cliprint::Attr64Info, U64> && !Takes<cliprint::Attr64Info, S64>);
static_assert(!std::is_constructible_v<cliprint::BoolAttrInfo, cliprint::AttrName, Renderer const&, char const*>);
static_assert(!std::is_copy_constructible_v<StringAttrInfo> && !std::is_copy_assignable_v<cliprint::Attr32Info>);

TEST(AttrInfoDeathTest, programmingErrors) {
   OnRenderer text(textFormat);
   EXPECT_DEATH(StringAttrInfo("a", text.renderer).getArg(), "hasValue, source cliprint/AttrInfo");
   EXPECT_DEATH(cliprint::DoubleAttrInfo("a", text.renderer).getArg(), "hasValue, source cliprint/AttrInfo");
   OnRenderer third(3);
   EXPECT_DEATH(cliprint::BoolAttrInfo("a", third.renderer, true), "failed: 0, source cliprint/AttrInfo");
}

}  // namespace
