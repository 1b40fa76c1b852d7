#include "Kiv/CliSupport.h"
#include "programs/kiv/ShowSummary.h"
#include "tests/Vault/VaultTesting.h"
#include "tests/programs/kiv/ProgramRun.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

template <class RouteType>
void expectRowFor(RouteType type, std::span<kiv::SummaryRow const> rows) {
   auto const* const strings = Kiv::routeTypeStringsFind(type);
   EXPECT_TRUE(strings == nullptr ||
               std::ranges::count(rows, std::string_view(strings->summaryCategory), &kiv::SummaryRow::category) == 1)
       << int{static_cast<U8>(type)};
}

TEST(ShowSummary, HasOneRowForEveryCategory) {
   for (U32 type = 0; type < 256; ++type) {
      expectRowFor(static_cast<Routing::Fib::RouteType>(type), kiv::ipSummaryRows());
      expectRowFor(static_cast<Routing6::Fib::RouteType>(type), kiv::ipv6SummaryRows());
   }
}

// A table that is damaged is told of, beside what was counted.
TEST(ShowSummary, TellsOfDamage) {
   ProgramRun const run;
   ASSERT_EQ(run("$KIV load $DEMO --state $DIR/s").status, 0);
   auto const table = run.dir() / "s/fib/route/0";
   using Vault::Records::RouteRecord4;
   Vault::Testing::patch(table,
                         Vault::Testing::slotOffset<RouteRecord4>(table, 0) +
                             offsetof(Vault::Slot<RouteRecord4>, words) + offsetof(RouteRecord4, key.length),
                         U8{77});
   Finished const finished = run("$KIV --state $DIR/s show ip route summary");
   EXPECT_EQ(finished.status, 3);
   EXPECT_NE(finished.err.find("fib/route/0: damaged "), std::string::npos) << finished.err;
   EXPECT_NE(finished.out.find("Total routes: "), std::string::npos) << finished.out;
}

}  // namespace
