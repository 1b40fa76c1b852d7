#include "Kiv/CliSupport.h"
#include "programs/kiv/ShowSummary.h"

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

}  // namespace
