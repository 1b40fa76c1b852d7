#include "Lumen/EthAddr.h"
#include "Lumen/MplsLabelOperation.h"
#include "Lumen/Vni.h"
#include "Zam/Error.h"
#include "support/Testing.h"

// Labels, label stacks, VNIs and MAC addresses.
namespace Lumen::Test {
namespace {

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
   EXPECT_THROW(full.labelAppend(MplsLabel(1)), Zam::RangeError);
   EXPECT_THROW(MplsLabelOperation::parse(full.stringValue() + " 1"), Zam::RangeError);
}

TEST(EthAddrTest, HoldsItsBytesInOrder) {
   EXPECT_EQ(EthAddr::parse("00:1c:73:ab:cd:0f"), EthAddr({0x00, 0x1c, 0x73, 0xab, 0xcd, 0x0f}));
   EXPECT_TRUE(EthAddr().isZero() && !EthAddr::parse("00:00:00:00:00:01").isZero());
}

}  // namespace
}  // namespace Lumen::Test
