#include "Kiv/config/AddressAssignmentChecker.h"

#include "L3/VrfName.h"
#include "Zam/Error.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>

namespace Kiv {

namespace {

using Lumen::IntfId;

AddressQueryResult accepted() {
   return {{}, true, {}};
}

AddressQueryResult refused(std::initializer_list<std::string_view> words) {
   std::string message;
   for (auto const word : words) {
      message += word;
   }
   return {{}, false, std::move(message)};
}

// What is different between the families, on purpose: users know the messages as they are.
struct Ip4Rules {
   using Params = AddressQueryParams;
   using AddrWithMask = Lumen::IpAddrWithMask;
   using IntfConfig = Ip::IpIntfConfig;

   static std::optional<AddressQueryResult> answerAtOnce(Params const& params) {
      if (!params.ipConfig()) {
         return refused({"No interfaces"});
      }
      return params.addrWithMask().address().isZero() ? std::optional(accepted()) : std::nullopt;
   }

   // Calls conflicts(address, match) for the addresses of one interface until it is true of one. `match` says which
   // equal address the interface may be given again.
   template <class Conflicts>
   static bool anyAddress(IntfConfig const& config, Params const& params, Conflicts const& conflicts) {
      constexpr AddrWithMask none;
      auto const& primary = config.addrWithMask != none ? config.addrWithMask : config.virtualAddrWithMask;
      auto const isSecondaryConflict = [&](auto const& address) { return conflicts(address, params.secondaryMatch()); };
      return (primary != none && conflicts(primary, params.primaryMatch())) ||
             std::ranges::any_of(config.secondaryWithMask, isSecondaryConflict) ||
             std::ranges::any_of(config.virtualSecondaryWithMask, isSecondaryConflict);
   }

   static AddressQueryResult assignedToItself(AddrWithMask const& added, IntfId const& intfId) {
      return refused(
          {"Address ", added.address().stringValue(), " is already assigned to interface ", intfId.stringValue()});
   }
   static std::string_view subnetWord(AddrWithMask const& added) {
      return added.length() == AddrWithMask::maxLength ? "Address " : "Subnet ";
   }
   static std::string subnetText(AddrWithMask const& address) { return address.subnet().address().stringValue(); }
};

struct Ip6Rules {
   using Params = Address6QueryParams;
   using AddrWithMask = Lumen::Ip6AddrWithMask;
   using IntfConfig = Ip6::IntfConfig;

   static std::optional<AddressQueryResult> answerAtOnce(Params const& params) {
      if (isLinkLocal(params.addrWithMask())) {
         return refused({"'link-local' keyword must be used to configure a link local address."});
      }
      return params.ipConfig() ? std::nullopt : std::optional(refused({"No interfaces"}));
   }

   // Every link has its own link-local addresses.
   template <class Conflicts>
   static bool anyAddress(IntfConfig const& config, Params const& /* params */, Conflicts const& conflicts) {
      return std::ranges::any_of(config.addr, [&](auto const& address) {
         return !isLinkLocal(address) && conflicts(address, AddrMatchType::allowExactMatch);
      });
   }

   static AddressQueryResult assignedToItself(AddrWithMask const& added, IntfId const& /* intfId */) {
      return refused({"Address ", added.stringValue(), " is already assigned to this interface"});
   }
   static std::string_view subnetWord(AddrWithMask const& /* added */) { return "Subnet "; }
   static std::string subnetText(AddrWithMask const& address) { return address.subnet().stringValue(); }

 private:
   static bool isLinkLocal(AddrWithMask const& address) { return address.address().hi() >> 54 == 0xfe80 >> 6; }
};

// The interface of that name, if any can have it.
std::optional<IntfId> intfIdOf(Zam::String const& name) {
   try {
      return IntfId::parse(name);
   } catch (std::exception const&) {
      return std::nullopt;
   }
}

template <class Rules>
class Check {
 public:
   using Params = typename Rules::Params;
   using AddrWithMask = typename Rules::AddrWithMask;
   using IntfConfig = typename Rules::IntfConfig;

   explicit Check(Params const& params)
       : params_(params),
         added_(params.addrWithMask()),
         ownId_(intfIdOf(params.intfName())),
         ownConfig_(ownId_ ? params.ipConfig()->intfConfig(*ownId_) : nullptr),
         ownVrf_(ownConfig_ != nullptr ? ownConfig_->vrf.get() : nullptr),
         ownVrfName_(vrfName(ownVrf_)) {}

   AddressQueryResult operator()() const {
      for (auto const& [intfId, config] : params_.ipConfig()->intfConfig()) {
         if (config.vrf.get() == ownVrf_ || vrfName(config.vrf.get()) == ownVrfName_) {
            if (auto conflict = conflictWith(intfId, config)) {
               return *std::move(conflict);
            }
         }
      }
      return accepted();
   }

 private:
   static std::string_view vrfName(L3::VrfNameRef const* vrf) {
      return vrf != nullptr ? std::string_view(vrf->vrfName()) : L3::VrfName::defaultVrf;
   }

   std::optional<AddressQueryResult> conflictWith(IntfId const& intfId, IntfConfig const& config) const {
      std::optional<AddressQueryResult> conflict;
      bool const isOwn = &config == ownConfig_;
      Rules::anyAddress(config, params_, [&](AddrWithMask const& existing, AddrMatchType match) {
         conflict = isOwn ? conflictOnItself(intfId, existing, match) : conflictWithOther(intfId, existing);
         return conflict.has_value();
      });
      return conflict;
   }

   std::optional<AddressQueryResult> conflictOnItself(IntfId const& intfId, AddrWithMask const& existing,
                                                      AddrMatchType match) const {
      if (existing.address() != added_.address() || match == AddrMatchType::allowAddressMatch ||
          (match == AddrMatchType::allowExactMatch && existing.length() == added_.length())) {
         return std::nullopt;
      }
      return Rules::assignedToItself(added_, intfId);
   }

   std::optional<AddressQueryResult> conflictWithOther(IntfId const& intfId, AddrWithMask const& existing) const {
      auto const differing = existing.address() ^ added_.address();
      auto const mask = AddrWithMask::AddrType::mask(std::min(existing.length(), added_.length()));
      if (!(differing & mask).isZero()) [[likely]] {
         return std::nullopt;
      }
      if (differing.isZero()) {
         return refused(
             {"Address ", added_.address().stringValue(), " is already assigned to interface ", intfId.stringValue()});
      }
      if (isManagement(params_.intfName()) && isManagement(intfId.stringValue())) {
         return std::nullopt;
      }
      return refused({Rules::subnetWord(added_), Rules::subnetText(added_), " overlaps with existing subnet ",
                      Rules::subnetText(existing), " of interface ", intfId.stringValue()});
   }

   // Management interfaces may be several ways to one network.
   bool isManagement(std::string_view intfName) const { return intfName.starts_with(params_.mgmtPrefix().bytes()); }

   Params const& params_;
   AddrWithMask const added_;
   std::optional<IntfId> const ownId_;
   IntfConfig const* const ownConfig_;  // null when the interface has none yet
   L3::VrfNameRef const* const ownVrf_;
   std::string_view const ownVrfName_;
};

template <class Rules>
AddressQueryResult checked(typename Rules::Params const& params) {
   auto const answer = Rules::answerAtOnce(params);
   return answer ? *answer : Check<Rules>(params)();
}

}  // namespace

AddressQueryResult AddressAssignmentChecker::check(Zam::Ptr<AddressQueryParams const> const& params) const {
   return checked<Ip4Rules>(*params);
}

AddressQueryResult Address6AssignmentChecker::check(Zam::Ptr<Address6QueryParams const> const& params) const {
   return checked<Ip6Rules>(*params);
}

}  // namespace Kiv
