#include "programs/kernel/KernelState.h"
#include "tests/programs/kernel/RouteLines.h"

#include <gtest/gtest.h>

namespace kernelTest {

class RecordedMachine : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(States, RecordedMachine, testing::Values(std::string("up"), "carrierdown", "linkdown"),
                         [](auto const& machine) { return machine.param; });

TEST_P(RecordedMachine, hasTheRoutesThatIpRouteShows) {
   Lines const shown = routeLines(recordedJson(GetParam()));
   EXPECT_GT(shown.size(), 150U);
   EXPECT_EQ(difference(routeLines(kernel::stateFrom(recordedDumps(GetParam()))), shown), "");
}

TEST_P(RecordedMachine, hasTheInterfacesThatIpAddrShows) {
   state::State const state = kernel::stateFrom(recordedDumps(GetParam()));
   EXPECT_EQ(difference(interfaceLines(state), interfaceLines(recordedJson(GetParam()))), "");
}

// Without the next-hop objects, what the routes tell about themselves stands in.
TEST_P(RecordedMachine, resolvesObjectsToWhatTheRoutesTell) {
   kernel::Dumps dumps = recordedDumps(GetParam());
   Lines const resolved = routeLines(kernel::stateFrom(dumps));
   dumps.nextHops.clear();
   EXPECT_EQ(difference(routeLines(kernel::stateFrom(dumps)), resolved), "");
}

}  // namespace kernelTest
