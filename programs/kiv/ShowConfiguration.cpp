#include "programs/kiv/ShowConfiguration.h"

#include "programs/kiv/Families.h"
#include "programs/kiv/StaticRouteClauses.h"
#include "programs/kiv/Vrfs.h"

namespace kiv {
namespace {

struct RunningArguments {
   bool all = false;
};

struct StaticTableArguments {
   std::optional<U32> tag{};
   std::string vrf{L3::VrfName::defaultVrf};  // or all
};

template <class Family>
constexpr std::string_view routeCommand = "ip route ";
template <>
constexpr std::string_view routeCommand<Ip6> = "ipv6 route ";

template <class Family>
std::string savedRoutes(state::Inputs::Vrf const& vrf, bool withDefaults) {
   std::string command(routeCommand<Family>);
   if (!vrf.name.isDefaultVrf()) {
      command.append("vrf ").append(vrf.name.bytes()).append(" ");
   }
   Kiv::StaticRoutesCliSaver saver;
   return saver.save(Family::of(vrf).routeList, withDefaults, Zam::String(command), Kiv::RoutingConsts()).bytes();
}

template <class Family>
ExitStatus showRunning(Session& session, RunningArguments const& asked) {
   state::Inputs const inputs = session.inputs();
   std::string text;
   for (auto const& vrf : vrfsInOrder(inputs)) {
      endWhenInterrupted();
      text += savedRoutes<Family>(vrf, asked.all);
   }
   return session.write(text);
}

template <class Family>
ExitStatus printStatic(Session const& session, state::Inputs const& inputs, state::Inputs::Vrf const& vrf, U32 tag) {
   if (!session.isJson()) {
      if (ExitStatus const status = session.write("\nVRF: " + vrf.name.bytes() + "\n"); status != ExitStatus::ok) {
         return status;
      }
   }
   Kiv::StaticRoutesRibCommon table;
   table.allIntfConfig = inputs.allIntfConfig;
   table.fd = static_cast<U32>(session.output());
   table.fmt = session.format();
   table.tag = tag;
   table.routeInputConf.insert(Zam::makePtr<Routing::RouteInput>(Family::of(vrf).routeList));
   return session.ended(table.dump(Kiv::RoutingConsts()));
}

template <class Family>
ExitStatus showStatic(Session& session, StaticTableArguments const& asked) {
   state::Inputs const inputs = session.inputs();
   return printPerVrf(session, requestedVrfs(inputs, asked.vrf), [&](state::Inputs::Vrf const& vrf) {
      return [&] { return printStatic<Family>(session, inputs, vrf, asked.tag.value_or(0)); };
   });
}

constexpr auto runningClauses = clauses(clause<&RunningArguments::all>(
    {.keyword = "all", .help = "with preference and tag, even when they are the usual ones"}));

constexpr auto staticTableClauses =
    clauses(clause<&StaticTableArguments::tag, AnyNumber>({.keyword = "tag", .help = "with this tag; 0 for any"}),
            vrfOrAllClause<&StaticTableArguments::vrf>);

constexpr auto configurationTable = std::to_array<Command>({
    display<showStatic<Ip4>>("show ip route static configured", "the IPv4 static routes as they are configured",
                             staticTableClauses),
    display<showStatic<Ip6>>("show ipv6 route static configured", "the IPv6 static routes as they are configured",
                             staticTableClauses),
    command<showRunning<Ip4>>("show running-config ip route", "the commands that configure the IPv4 static routes",
                              runningClauses),
    command<showRunning<Ip6>>("show running-config ipv6 route", "the commands that configure the IPv6 static routes",
                              runningClauses),
});

}  // namespace

std::span<Command const> showConfigurationCommands() {
   return configurationTable;
}

}  // namespace kiv
