#include "programs/kiv/ShowNexthopGroup.h"

#include "Kiv/CliSupport.h"
#include "programs/kiv/Source.h"
#include "programs/kiv/VrfOutput.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <stdexcept>

namespace kiv {
namespace {

namespace groupClause {
constexpr std::string_view summary = "summary";
constexpr std::string_view mapping = "mapping";
constexpr std::string_view id = "id";
constexpr std::string_view name = "name";
constexpr std::string_view freeName = "NAME";
constexpr std::string_view vrf = "vrf";
}  // namespace groupClause

// 0 when it is none.
U32 groupIdOf(std::string_view word) {
   U32 id = 0;
   auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), id);
   return error == std::errc() && end == word.data() + word.size() ? id : 0;
}

void checkGroupId(std::string_view word) {
   if (groupIdOf(word) == 0) {
      throw std::runtime_error("not a number from 1 to 4294967295");
   }
}

bool anyWord(std::string_view) {
   return true;
}

// One group, one table of them, or all.
constexpr std::array notWithSummary{groupClause::mapping, groupClause::id, groupClause::name, groupClause::freeName};
constexpr std::array notWithMapping{groupClause::id, groupClause::name, groupClause::freeName};
constexpr std::array notWithId{groupClause::name, groupClause::freeName};
constexpr std::array notWithName{groupClause::freeName};

constexpr auto clauses = std::to_array<Clause>({
    {.keyword = groupClause::summary,
     .parameter = "",
     .help = "instead, how many there are, by type and by size",
     .excludes = notWithSummary},
    {.keyword = groupClause::mapping,
     .parameter = "",
     .help = "instead, the name of each id",
     .excludes = notWithMapping},
    {.keyword = groupClause::id,
     .parameter = "N",
     .help = "the group of this id",
     .check = checkGroupId,
     .excludes = notWithId},
    {.keyword = groupClause::name,
     .parameter = "NAME",
     .help = "the group of this name, whatever it is",
     .excludes = notWithName},
    {.keyword = "",
     .parameter = groupClause::freeName,
     .help = "the same, of a name that begins no keyword",
     .accepts = anyWord},
    {.keyword = groupClause::vrf,
     .parameter = "NAME",
     .help = "as the hardware has them in this VRF, not in the default one"},
});

std::runtime_error noSuch(std::string_view what, std::string const& name, Request const& request) {
   return std::runtime_error('"' + name + "\": " + std::string(request.command.words) + ": no such " +
                             std::string(what));
}

L3::VrfName requestedVrf(state::Inputs const& inputs, Request const& request) {
   auto const& name = request.value(groupClause::vrf);
   auto const* const vrf = inputs.vrf(name ? std::string_view(*name) : L3::VrfName::defaultVrf);
   if (vrf == nullptr) {
      throw noSuch("VRF", name.value_or(""), request);
   }
   return vrf->name;
}

// Empty for any.
std::string requestedName(state::Inputs const& inputs, Request const& request) {
   auto const& given = request.value(groupClause::name);
   auto const& name = given ? given : request.value(groupClause::freeName);
   if (name && inputs.nexthopGroupConfig->nexthopGroup(Zam::String(*name)) == nullptr) {
      throw noSuch("nexthop group", *name, request);
   }
   return name.value_or("");
}

// 0 for any.
U32 requestedId(state::Inputs const& inputs, Request const& request) {
   auto const& word = request.value(groupClause::id);
   U32 const id = word ? groupIdOf(*word) : 0;
   bool isKnown = !word;
   if (word && inputs.nexthopGroupEntryStatus) {
      inputs.nexthopGroupEntryStatus->walk([&](std::string_view name, U32 each) {
         isKnown = isKnown || (each == id && inputs.nexthopGroupConfig->nexthopGroup(Zam::String(name)) != nullptr);
      });
   }
   if (!isKnown) {
      if (inputs.nexthopGroupEntryStatus && inputs.nexthopGroupEntryStatus->corruptions() != 0) {
         throw Vault::CorruptionError(
             inputs.nexthopGroupEntryStatus->corruption());  // it may be in what cannot be read
      }
      throw noSuch("nexthop group", *word, request);
   }
   return id;
}

// What a display's answer means; errno tells why it is not complete.
ExitStatus statusOf(bool complete) {
   int const error = errno;
   if (complete) {
      return ExitStatus::ok;
   }
   return error == EINTR ? ExitStatus::interrupted : outputFailed(error);
}

ExitStatus showSummary(state::Inputs const& inputs, L3::VrfName const& vrf, cliprint::OutputFormat format) {
   Kiv::NexthopGroupSummaryHelper summary;
   summary.nhgConfig = inputs.nexthopGroupConfig;
   summary.nhgEntryStatus = inputs.nexthopGroupEntryStatus;
   summary.nhgHwStatus = inputs.nexthopGroupHardwareStatus;
   summary.routingHwStatus = inputs.routingHardwareStatus;
   summary.vrfName = vrf;
   summary.processNexthopGroups();
   return statusOf(summary.render(STDOUT_FILENO, format));
}

ExitStatus showMapping(state::Inputs const& inputs, cliprint::OutputFormat format) {
   Kiv::NexthopGroupMappingHelper mapping;
   mapping.nhgConfig = inputs.nexthopGroupConfig;
   mapping.nhgEntryStatus = inputs.nexthopGroupEntryStatus;
   return statusOf(mapping.render(STDOUT_FILENO, format));
}

ExitStatus showDetail(state::Inputs& inputs, Request const& request, L3::VrfName const& vrf,
                      cliprint::OutputFormat format) {
   Kiv::NexthopGroupDetailHelper detail;
   detail.nhgConfig = inputs.nexthopGroupConfig;
   detail.nhgEntryStatus = inputs.nexthopGroupEntryStatus;
   detail.nhgHwStatus = inputs.nexthopGroupHardwareStatus;
   detail.routingHwStatus = inputs.routingHardwareStatus;
   detail.vrfName = vrf;
   detail.nhgName = requestedName(inputs, request);
   detail.nhgId = requestedId(inputs, request);
   auto const counters = inputs.nexthopGroupCounters();
   detail.counterHelper = counters;
   ExitStatus status = statusOf(detail.render(STDOUT_FILENO, format));
   status = checkedTable(counters->counterKeyTable(), status);
   status = checkedTable(counters->counterTable(), status);
   return checkedTable(counters->snapshotTable(), status);
}

}  // namespace

std::span<Clause const> nexthopGroupClauses() {
   return clauses;
}

ExitStatus showNexthopGroup(Request const& request) {
   state::Inputs inputs = inputsFrom(request.options.source);
   auto const vrf = requestedVrf(inputs, request);
   auto const format = request.options.json ? cliprint::modelFormat : cliprint::textFormat;
   ExitStatus const status = request.has(groupClause::summary)   ? showSummary(inputs, vrf, format)
                             : request.has(groupClause::mapping) ? showMapping(inputs, format)
                                                                 : showDetail(inputs, request, vrf, format);
   return checkedTable(inputs.nexthopGroupEntryStatus, status);
}

}  // namespace kiv
