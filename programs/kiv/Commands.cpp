#include "programs/kiv/Commands.h"

#include "programs/kiv/Help.h"
#include "programs/kiv/Load.h"
#include "programs/kiv/RouteClauses.h"
#include "programs/kiv/ShowRoute.h"
#include "programs/kiv/ShowSummary.h"

#include <array>

namespace kiv {
namespace {

bool anyWord(std::string_view) {
   return true;
}

constexpr auto loadClauses = std::to_array<Clause>({
    {.keyword = "",
     .parameter = "SNAPSHOT",
     .help = "file that describes the state of a box, see docs/snapshot.md",
     .required = true,
     .accepts = anyWord},
});

}  // namespace

std::span<Command const> commands() {
   static auto const table = std::to_array<Command>({
       {"show ip route", "the IPv4 route table", ipRouteClauses(), showIpRoute},
       {"show ipv6 route", "the IPv6 route table", ipv6RouteClauses(), showIpv6Route},
       {"show ip route summary", "how many IPv4 routes there are", summaryClauses(), showIpRouteSummary},
       {"show ipv6 route summary", "how many IPv6 routes there are", summaryClauses(), showIpv6RouteSummary},
       {"load", "make the directory given with --state hold the state of a snapshot", loadClauses, loadSnapshot},
       {"help", "the commands and options", {}, help},
   });
   return table;
}

}  // namespace kiv
