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

TEST(MplsLabelTest, ReachesUpToTheWithdrawMarker) {
   EXPECT_EQ(MplsLabel().value(), 0x100000U);
   EXPECT_TRUE(MplsLabel(0xfffff).isLabel() && !MplsLabel().isLabel());
   EXPECT_EQ(MplsLabel(0x800000).stringValue(), "8388608");
   expectRangeError([] { MplsLabel(0x800001); }, labelRange);
   expectRangeError([] { Zam::strepToValue<MplsLabel>("4294967296"); }, labelRange);
   expectRangeError([] { Vni(0x1000000); }, "Lumen::Vni::value > Lumen::Vni::max not allowed");
   EXPECT_THROW(Zam::strepToValue<MplsLabel>("'1'"), Zam::ParseError);
}

TEST(MplsLabelOperationTest, TextNamesTheOperationAndTheStack) {
   using enum MplsLabelOperation::Operation;
   EXPECT_EQ(MplsLabelOperation(push, {MplsLabel(100), MplsLabel(3)}).stringValue(), "push 100 3");
   EXPECT_EQ(MplsLabelOperation::parse("swap 1048576"), MplsLabelOperation(swap, {MplsLabel()}));
   EXPECT_NE(MplsLabelOperation(push, {MplsLabel()}), MplsLabelOperation(push, {}));
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

TEST(EthAddrTest, HoldsItsBytesInOrder) {
   EXPECT_EQ(EthAddr::parse("00:1c:73:ab:cd:0f"), EthAddr({0x00, 0x1c, 0x73, 0xab, 0xcd, 0x0f}));
   EXPECT_TRUE(EthAddr().isZero() && !EthAddr::parse("00:00:00:00:00:01").isZero());
}

}  // namespace
}  // namespace Lumen::Test
