#include "programs/kiv/Check.h"

#include "Interface/Management.h"
#include "Kiv/CliSupport.h"
#include "programs/kiv/Output.h"
#include "programs/kiv/Source.h"
#include "state/Snapshot.h"

#include <stdexcept>

namespace kiv {
namespace {

// The answer as text or JSON; a "no" is a refusal of the command, whose reason goes to standard error.
ExitStatus answer(Request const& request, std::string const& asked, bool acceptable, std::string_view message) {
   if (request.options.json) {
      ExitStatus const status = writeOutput(std::string("{\"acceptable\":") + (acceptable ? "true" : "false") +
                                            ",\"msg\":" + state::jsonQuoted(message) + "}\n");
      return status == ExitStatus::ok && !acceptable ? ExitStatus::refused : status;
   }
   if (!acceptable) {
      report('"' + asked + "\": " + std::string(request.command.words) + ": " + std::string(message));
      return ExitStatus::refused;
   }
   return writeOutput("acceptable\n");
}

Zam::Ptr<L3::VrfNameRef const> vrfRef(L3::VrfName const& name) {
   return Zam::makePtr<L3::VrfNameRef>(name);
}

Zam::Ptr<Ip::Config const> ipConfig(Ip::Status const& status) {
   auto const config = Zam::makePtr<Ip::Config>();
   for (auto const& [intfId, intf] : status.intfStatus()) {
      config->intfConfigIs(intfId, {.vrf = vrfRef(intf.vrfName),
                                    .addrWithMask = intf.primaryAddr,
                                    .secondaryWithMask = {intf.secondaryAddr.begin(), intf.secondaryAddr.end()}});
   }
   return config;
}

Zam::Ptr<Ip6::Config const> ip6Config(Ip6::Status const& status) {
   auto const config = Zam::makePtr<Ip6::Config>();
   for (auto const& [intfId, intf] : status.intfStatus()) {
      Ip6::IntfConfig added{.vrf = vrfRef(intf.vrfName)};
      intf.forEachAddr([&](auto const& addr) { added.addr.insert(addr); });
      config->intfConfigIs(intfId, std::move(added));
   }
   return config;
}

template <class T>
void checkText(std::string_view word, char const* form) {
   try {
      T::parse(word);
   } catch (std::exception const&) {
      throw std::invalid_argument(std::string("not ") + form);
   }
}

Zam::Ptr<Zam::Dir<Zam::PtrInterface> const> rdInputs(state::Inputs const& inputs,
                                                     std::optional<Lumen::RouteDistinguisher> state::Inputs::Vrf::*rd) {
   auto const input = Zam::makePtr<Ip::RouteDistinguisherInput>();
   for (auto const& vrf : inputs.vrfs()) {
      if (vrf.*rd) {
         input->routeDistinguisherIs(vrf.name, *(vrf.*rd));
      }
   }
   auto const dir = Zam::makePtr<Zam::Dir<Zam::PtrInterface>>();
   dir->entityIs("vrfs", input);
   return dir;
}

}  // namespace

ExitStatus checkIpAddress(Request const& request) {
   std::string const& asked = *request.value("ADDRESS/LENGTH");
   bool const isSecondary = request.has("secondary");
   state::Inputs const inputs = inputsFrom(request.options.source);
   // An address may be entered again, and the primary one with another mask; it does not become the other kind.
   using enum Kiv::AddrMatchType;
   auto const params = Kiv::addressQueryParamsFactory(
       ipConfig(*inputs.ipStatus), Zam::String(*request.value("interface")), Zam::String(Interface::managementPrefix),
       isSecondary ? allowNoMatch : allowAddressMatch, isSecondary ? allowExactMatch : allowNoMatch,
       Lumen::IpAddrWithMask::parse(asked));
   auto const result = Kiv::AddressAssignmentChecker().check(params);
   return answer(request, asked, result.acceptable, result.msg);
}

ExitStatus checkIpv6Address(Request const& request) {
   std::string const& asked = *request.value("ADDRESS/LENGTH");
   state::Inputs const inputs = inputsFrom(request.options.source);
   auto const params =
       Kiv::address6QueryParamsFactory(ip6Config(*inputs.ip6Status), Zam::String(*request.value("interface")),
                                       Zam::String(Interface::managementPrefix), Lumen::Ip6AddrWithMask::parse(asked));
   auto const result = Kiv::Address6AssignmentChecker().check(params);
   return answer(request, asked, result.acceptable, result.msg);
}

ExitStatus checkRouteDistinguisher(Request const& request) {
   std::string const& asked = *request.value("RD");
   state::Inputs const inputs = inputsFrom(request.options.source);
   Kiv::RdAssignmentChecker const checker(rdInputs(inputs, &state::Inputs::Vrf::autoRouteDistinguisher),
                                          rdInputs(inputs, &state::Inputs::Vrf::routeDistinguisher),
                                          Zam::String(*request.value("vrf")), Lumen::RouteDistinguisher::parse(asked));
   return answer(request, asked, checker.acceptable, checker.errorMessage);
}

void checkIpAddressText(std::string_view word) {
   checkText<Lumen::IpAddrWithMask>(word, "an IPv4 address with its length, such as 192.0.2.1/24");
}

void checkIpv6AddressText(std::string_view word) {
   checkText<Lumen::Ip6AddrWithMask>(word, "an IPv6 address with its length, such as 2001:db8::1/64");
}

void checkRouteDistinguisherText(std::string_view word) {
   checkText<Lumen::RouteDistinguisher>(word, "a route distinguisher, such as 65000:100 or 192.0.2.1:100");
}

}  // namespace kiv
