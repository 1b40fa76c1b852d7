#include "programs/kiv/Check.h"

#include "Interface/Management.h"
#include "Kiv/CliSupport.h"
#include "programs/kiv/Vrfs.h"
#include "state/Snapshot.h"

#include <stdexcept>

namespace kiv {
namespace {

// Something that is written in one form; `of` tells which when a word is not.
template <class T>
struct Written {
   static constexpr Named named = Named::nothing;
   static bool accepts(std::string_view) { return true; }
   static T read(std::string_view word, char const* form) {
      try {
         return T::parse(word);
      } catch (std::exception const&) {
         throw std::invalid_argument(std::string("not ") + form);
      }
   }
};

struct AddressAndLength : Written<Lumen::IpAddrWithMask> {
   static constexpr std::string_view name = "ADDRESS/LENGTH";
   static auto read(std::string_view word) {
      return Written::read(word, "an IPv4 address with its length, such as 192.0.2.1/24");
   }
};

struct Address6AndLength : Written<Lumen::Ip6AddrWithMask> {
   static constexpr std::string_view name = "ADDRESS/LENGTH";
   static auto read(std::string_view word) {
      return Written::read(word, "an IPv6 address with its length, such as 2001:db8::1/64");
   }
};

struct RouteDistinguisher : Written<Lumen::RouteDistinguisher> {
   static constexpr std::string_view name = "RD";
   static auto read(std::string_view word) {
      return Written::read(word, "a route distinguisher, such as 65000:100 or 192.0.2.1:100");
   }
};

// What is asked about, as it was typed too.
template <class Kind>
struct Typed : Kind {
   struct Value {
      std::string word{};
      decltype(Kind::read("")) value{};
   };
   static Value read(std::string_view word) { return {std::string(word), Kind::read(word)}; }
};

struct AddressArguments {
   Typed<AddressAndLength>::Value address{};
   std::string interface {};
   bool secondary = false;
};

struct Address6Arguments {
   Typed<Address6AndLength>::Value address{};
   std::string interface {};
};

struct RdArguments {
   Typed<RouteDistinguisher>::Value rd{};
   std::string vrf{};
};

// The answer as text or JSON; a "no" is a refusal of the command, whose reason goes to standard error.
ExitStatus answer(Session const& session, std::string const& asked, bool acceptable, std::string_view message) {
   if (session.isJson()) {
      ExitStatus const status = session.write(std::string("{\"acceptable\":") + (acceptable ? "true" : "false") +
                                              ",\"msg\":" + state::jsonQuoted(message) + "}\n");
      return status == ExitStatus::ok && !acceptable ? ExitStatus::refused : status;
   }
   return acceptable ? session.write("acceptable\n") : throw Refusal(asked, std::string(message));
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

ExitStatus checkIpAddress(Session& session, AddressArguments const& asked) {
   state::Inputs const inputs = session.inputs();
   requestedInterface(inputs, asked.interface);
   // An address may be entered again, and the primary one with another mask; it does not become the other kind.
   using enum Kiv::AddrMatchType;
   auto const params = Kiv::addressQueryParamsFactory(
       ipConfig(*inputs.ipStatus), Zam::String(asked.interface), Zam::String(Interface::managementPrefix),
       asked.secondary ? allowNoMatch : allowAddressMatch, asked.secondary ? allowExactMatch : allowNoMatch,
       asked.address.value);
   auto const result = Kiv::AddressAssignmentChecker().check(params);
   return answer(session, asked.address.word, result.acceptable, result.msg);
}

ExitStatus checkIpv6Address(Session& session, Address6Arguments const& asked) {
   state::Inputs const inputs = session.inputs();
   requestedInterface(inputs, asked.interface);
   auto const params = Kiv::address6QueryParamsFactory(ip6Config(*inputs.ip6Status), Zam::String(asked.interface),
                                                       Zam::String(Interface::managementPrefix), asked.address.value);
   auto const result = Kiv::Address6AssignmentChecker().check(params);
   return answer(session, asked.address.word, result.acceptable, result.msg);
}

ExitStatus checkRouteDistinguisher(Session& session, RdArguments const& asked) {
   state::Inputs const inputs = session.inputs();
   requestedVrf(inputs, asked.vrf);
   Kiv::RdAssignmentChecker const checker(rdInputs(inputs, &state::Inputs::Vrf::autoRouteDistinguisher),
                                          rdInputs(inputs, &state::Inputs::Vrf::routeDistinguisher),
                                          Zam::String(asked.vrf), asked.rd.value);
   return answer(session, asked.rd.word, checker.acceptable, checker.errorMessage);
}

template <auto Member, class Kind>
constexpr auto addressClause =
    clause<Member, Typed<Kind>>({.keyword = "", .help = "the address and its mask length", .required = true});
template <auto Member>
constexpr auto onInterface = clause<Member, InterfaceName>({.keyword = "interface",
                                                            .help = "the interface that is to have it",
                                                            .required = true});

constexpr auto addressClauses = clauses(
    addressClause<&AddressArguments::address, AddressAndLength>, onInterface<&AddressArguments::interface>,
    clause<&AddressArguments::secondary>({.keyword = "secondary", .help = "beside the interface's primary address"}));
constexpr auto address6Clauses =
    clauses(addressClause<&Address6Arguments::address, Address6AndLength>, onInterface<&Address6Arguments::interface>);
constexpr auto rdClauses = clauses(
    clause<&RdArguments::rd, Typed<RouteDistinguisher>>(
        {.keyword = "", .help = "the route distinguisher", .required = true}),
    clause<&RdArguments::vrf, VrfName>({.keyword = "vrf", .help = "the VRF that is to have it", .required = true}));

constexpr auto checkTable = std::to_array<Command>({
    display<checkIpAddress>("check ip address", "may an interface have this IPv4 address?", addressClauses),
    display<checkIpv6Address>("check ipv6 address", "may an interface have this IPv6 address?", address6Clauses),
    display<checkRouteDistinguisher>("check route-distinguisher", "may a VRF have this route distinguisher?",
                                     rdClauses),
});

}  // namespace

std::span<Command const> checkCommands() {
   return checkTable;
}

}  // namespace kiv
