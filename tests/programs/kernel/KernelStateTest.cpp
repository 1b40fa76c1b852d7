#include "programs/kernel/KernelState.h"
#include "tests/programs/kernel/RouteLines.h"

namespace kernelTest {

TEST(RecordedMachine, hasTheRoutesAndInterfacesThatIpShows) {
   for (char const* const name : {"up", "carrierdown", "linkdown"}) {
      kernel::Dumps dumps = recordedDumps(name);
      Lines const lines = allLines(kernel::stateFrom(dumps));
      EXPECT_GT(lines.size(), 150U);
      EXPECT_EQ(difference(lines, shownLines(dataOf(name))), Lines()) << name;
      // Without the next-hop objects, what the routes tell about themselves stands in.
      dumps.nextHops.clear();
      EXPECT_EQ(difference(allLines(kernel::stateFrom(dumps)), lines), Lines()) << name;
   }
}

}  // namespace kernelTest
