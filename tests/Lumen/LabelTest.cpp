#include "Lumen/EthAddr.h"
#include "Lumen/MplsLabelOperation.h"
#include "Lumen/Vni.h"
#include "Zam/Error.h"
#include "support/Testing.h"

// Labels, label stacks, VNIs and MAC addresses.
namespace Lumen::Test {
namespace {

constexpr auto labelRange =
    "Lumen::MplsLabel::value < Lumen::MplsLabel::min or > Lumen::MplsLabel::luWithdraw not allowed";

template <class F>
void expectRangeError(F&& act, char const* message) {
   EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>(act), message);
}

template <class T>
void expectNumberTexts(char const* rangeMessage, U32 max) {
   auto const largest = std::to_string(max);
   EXPECT_EQ(T::parse(largest), T(max));
   EXPECT_EQ(Zam::valueToStrep(T(max)), largest);
   for (std::string const& tooLarge :
        {std::to_string(max + 1), std::string("4294967295"), std::string("4294967296"), std::string("4294967297")}) {
      expectRangeError([&] { T::parse(tooLarge); }, rangeMessage);
      expectRangeError([&] { Zam::strepToValue<T>(tooLarge); }, rangeMessage);
   }
   expectRangeError([&] { T::parse("99999999999999999999999"); }, rangeMessage);
   expectRangeError([&] { (void)T(max + 1); }, rangeMessage);
   for (std::string const bad : {"", " 1", "1 ", "+1", "-1", "01", "0x1", "1a", "'1'"}) {
      EXPECT_THROW(T::parse(bad), Zam::ParseError) << bad;
      EXPECT_THROW(Zam::strepToValue<T>(bad), Zam::ParseError) << bad;
   }
}

TEST(MplsLabelTest, ReachesUpToTheWithdrawMarker) {
   EXPECT_EQ(MplsLabel().value(), 0x100000U);
   EXPECT_FALSE(MplsLabel().isLabel());
   EXPECT_TRUE(MplsLabel(0xfffff).isLabel());
   expectNumberTexts<MplsLabel>(labelRange, 0x800000);
}

TEST(VniTest, HasTwentyFourBits) {
   expectNumberTexts<Vni>("Lumen::Vni::value > Lumen::Vni::max not allowed", 0xffffff);
}

TEST(MplsLabelOperationTest, TextNamesTheOperationAndTheStack) {
   using enum MplsLabelOperation::Operation;
   EXPECT_EQ(MplsLabelOperation().stringValue(), "none");
   EXPECT_EQ(MplsLabelOperation(pop, {}).stringValue(), "pop");
   MplsLabelOperation pushed(push, {MplsLabel(100), MplsLabel(3)});
   EXPECT_EQ(pushed.stringValue(), "push 100 3");
   EXPECT_EQ(MplsLabelOperation::parse("swap 1048576"), MplsLabelOperation(swap, {MplsLabel()}));
   EXPECT_NE(MplsLabelOperation(push, {MplsLabel()}), MplsLabelOperation(push, {}));
   for (std::string const bad :
        {"", " ", "Push 1", "push  1", "push 1 ", "push 1,2", "push x", "push-1", "drop", "1"}) {
      EXPECT_THROW(MplsLabelOperation::parse(bad), Zam::ParseError) << bad;
   }
   expectRangeError([] { MplsLabelOperation::parse("push 1 8388609"); }, labelRange);
}

TEST(MplsLabelOperationTest, HoldsSixteenLabels) {
   std::vector<MplsLabel> const labels(MplsLabelOperation::maxLabels, MplsLabel(MplsLabel::luWithdraw));
   MplsLabelOperation full(MplsLabelOperation::Operation::push, labels);
   EXPECT_EQ(full.stackSize(), 16U);
   EXPECT_EQ(MplsLabelOperation::parse(full.stringValue()), full);
   auto const message = "Lumen::MplsLabelOperation::stackSize > maxLabels not allowed";
   expectRangeError([&] { full.labelAppend(MplsLabel(1)); }, message);
   expectRangeError([&] { MplsLabelOperation::parse(full.stringValue() + " 1"); }, message);
}

TEST(EthAddrTest, ReadsSixPairsOfHexDigits) {
   EXPECT_EQ(EthAddr::parse("00:1C:73:aB:cD:0f"), EthAddr({0x00, 0x1c, 0x73, 0xab, 0xcd, 0x0f}));
   EXPECT_EQ(EthAddr::parse("00:1C:73:aB:cD:0f").stringValue(), "00:1c:73:ab:cd:0f");
   EXPECT_EQ(EthAddr().stringValue(), "00:00:00:00:00:00");
   EXPECT_TRUE(EthAddr().isZero() && !EthAddr::parse("00:00:00:00:00:01").isZero());
   for (std::string const bad : {"", "00:1c:73:ab:cd", "00:1c:73:ab:cd:0f:00", "0:1c:73:ab:cd:0f", "000:1c:73:ab:cd:0f",
                                 "00:1c:73:ab:cd:0", "00-1c-73-ab-cd-0f", "001c.73ab.cd0f", "00:1c:73:ab:cd:0g",
                                 " 00:1c:73:ab:cd:0f", "00:1c:73:ab:cd:0f ", "00::73:ab:cd:0f", ":00:1c:73:ab:cd:0f"}) {
      EXPECT_THROW(EthAddr::parse(bad), Zam::ParseError) << bad;
   }
}

}  // namespace
}  // namespace Lumen::Test
