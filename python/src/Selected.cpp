#include "python/src/Selected.h"

#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/display/ProgrammedState.h"
#include "Kiv/fecs/CachedFec.h"
#include "programs/command/Errors.h"
#include "programs/kiv/Families.h"
#include "programs/kiv/ShowRoute.h"

#include <any>
#include <charconv>
#include <unordered_map>

namespace kivPython {
namespace {

constexpr std::size_t interruptEvery = 4096;

Lumen::Ip6Addr wide(Lumen::IpAddr address) {
   return {0, address.value()};
}
Lumen::Ip6Addr wide(Lumen::Ip6Addr address) {
   return address;
}

// FECs by the order in which routes lead to them; neighbours often share theirs.
class FecPlaces {
 public:
   explicit FecPlaces(std::vector<Vault::Fib::FecId>& fecs) : fecs_(fecs) {}

   U32 of(Vault::Fib::FecId fecId) {
      if (fecs_.empty() || fecId != last_) {
         last_ = fecId;
         auto const [at, isNew] = places_.try_emplace(fecId, static_cast<U32>(fecs_.size()));
         lastPlace_ = at->second;
         if (isNew) {
            fecs_.push_back(fecId);
         }
      }
      return lastPlace_;
   }

 private:
   std::vector<Vault::Fib::FecId>& fecs_;
   std::unordered_map<Vault::Fib::FecId, U32> places_;
   Vault::Fib::FecId last_{};
   U32 lastPlace_ = 0;
};

std::optional<U32> numberOf(std::string_view text) {
   U32 number = 0;
   auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
   return error == std::errc() ? std::optional(number) : std::nullopt;
}

ViaValue valueOf(Kiv::CachedVia const& via, Kiv::CachedFec const& fec) {
   ViaValue value;
   if (!via.hop.isZero()) {
      value.nexthop = via.hop;
   }
   value.interface = via.intfId.name();
   value.vrf = via.vrfName.bytes();
   if (via.viaLabel.isLabel()) {
      value.label = via.viaLabel.value();
   }
   value.weight = numberOf(std::string_view(via.viaWeight));
   value.isBackup = via.isBackup;
   value.action = Zam::valueToStrep(via.forwardingAction);
   if (via.intfId.isNexthopGroup()) {
      value.nexthopGroup = fec.store()->sources().nexthopGroupName(via.intfId.nexthopGroupId());
   }
   if (via.intfId.isDynamicTunnel()) {
      value.tunnel = via.tunnelId();
   }
   if (via.intfId.isFecId() && !via.isForwardingVrfAction()) {
      value.fec = via.intfId.fecId();
   }
   return value;
}

std::vector<ViaValue> viasOf(Zam::Ptr<Kiv::CachedFec const> const& fec) {
   std::vector<ViaValue> values;
   if (fec) {
      for (auto const& [via, isShown] : fec->via()) {
         values.push_back(valueOf(via, *fec));
      }
   }
   return values;
}

// A route to a nexthop group whose group is not known is not shown.
template <class Sorter, class Route>
bool lacksGroup(Sorter const& sorter, Route const& route) {
   if (route.routeType != decltype(route.routeType)::nexthopGroup) {
      return false;
   }
   auto const fec = sorter.fec(route.fecId);
   return !fec || fec->vias() == 0;
}

template <class Family>
Selected selected(state::Inputs& inputs, kiv::RouteArguments<typename Family::Prefix> const& asked) {
   auto const sorter = kiv::selectedRoutes<Family>(inputs, asked);
   Kiv::ProgrammedState const programmed(inputs.unprogrammedRouteStatus.get(), inputs.kernelUnprogrammedRoute.get(),
                                         sorter->inputs().vrfId);
   Selected made{.family = Family::family, .vrf = asked.vrf, .vrfNames = inputs.vrfIdMap};
   made.rows.reserve(sorter->sortedRoutes());
   FecPlaces places(made.fecs);
   for (auto const& [prefix, route] : sorter->sortedRoute()) {
      if (made.rows.size() % interruptEvery == 0) {
         kiv::endWhenInterrupted();
      }
      if (lacksGroup(*sorter, route)) {
         continue;
      }
      made.rows.push_back({.address = wide(prefix.address()),
                           .metric = route.metric,
                           .sourceVrf = route.srcVrfId,
                           .fec = places.of(route.fecId),
                           .length = prefix.length(),
                           .type = static_cast<U8>(route.routeType),
                           .preference = route.preference,
                           .isInHardware = programmed.inHardware(prefix),
                           .isInKernel = programmed.inKernel(prefix)});
   }
   sorter->sortedRouteDelAll();
   made.vias = [sorter](Vault::Fib::FecId fecId) { return viasOf(sorter->fec(fecId)); };
   return made;
}

template <class RouteType>
Kiv::RouteTypeStrings const* stringsOf(U8 type) {
   return Kiv::routeTypeStringsFind(static_cast<RouteType>(type));
}

Kiv::RouteTypeStrings const* stringsOf(Lumen::AddressFamily family, U8 type) {
   return family == Lumen::AddressFamily::ipv4 ? stringsOf<Routing::Fib::RouteType>(type)
                                               : stringsOf<Routing6::Fib::RouteType>(type);
}

}  // namespace

Selected selectedBy(state::Inputs& inputs, kiv::Request const& request) try {
   if (auto const* const asked = std::any_cast<kiv::RouteArguments<Lumen::Prefix>>(&request.arguments)) {
      return selected<kiv::Ip4>(inputs, *asked);
   }
   if (auto const* const asked = std::any_cast<kiv::RouteArguments<Lumen::Ip6Prefix>>(&request.arguments)) {
      return selected<kiv::Ip6>(inputs, *asked);
   }
   throw kiv::UsageError('"' + std::string(request.command.words) + "\": does not tell of routes");
} catch (kiv::Refusal const& refusal) {
   throw std::runtime_error(refusal.line(request.command.words));
}

std::string_view typeWord(Lumen::AddressFamily family, U8 type) {
   auto const* const strings = stringsOf(family, type);
   return strings != nullptr ? strings->modelWord : "";
}

std::string_view typeCode(Lumen::AddressFamily family, U8 type) {
   auto const* const strings = stringsOf(family, type);
   return strings != nullptr ? strings->code : "";
}

}  // namespace kivPython
