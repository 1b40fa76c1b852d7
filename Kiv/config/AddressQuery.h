#pragma once

#include "Ip/Config.h"
#include "Ip6/Config.h"
#include "Lumen/Ip6AddrWithMask.h"
#include "Lumen/IpAddrWithMask.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"
#include "Zam/Strep.h"
#include "Zam/String.h"
#include "Zam/Value.h"

#include <array>

// What the address assignment checkers are asked, and what they answer.
namespace Kiv {

// When the interface that is to get an address has it already.
enum class AddrMatchType : U8 {
   allowNoMatch = 0,       // a conflict
   allowExactMatch = 1,    // accepted if the mask is the same, too
   allowAddressMatch = 2,  // accepted
};

constexpr auto zamEnumerators(AddrMatchType) {
   return std::to_array<Zam::Enumerator<AddrMatchType>>({{AddrMatchType::allowNoMatch, "allowNoMatch"},
                                                         {AddrMatchType::allowExactMatch, "allowExactMatch"},
                                                         {AddrMatchType::allowAddressMatch, "allowAddressMatch"}});
}

// May this IPv4 address be assigned to that interface?
class KIV_EXPORT AddressQueryParams final : public Zam::PtrInterface {
 public:
   AddressQueryParams(Zam::Ptr<Ip::Config const> const& ipConfig, Zam::String const& intfName,
                      Zam::String const& mgmtPrefix, AddrMatchType primaryMatch, AddrMatchType secondaryMatch,
                      Lumen::IpAddrWithMask const& addrWithMask) {
      AddressQueryParamsIs(ipConfig, intfName, mgmtPrefix, primaryMatch, secondaryMatch, addrWithMask);
   }
   std::string_view fwkType() const noexcept override { return "Kiv::AddressQueryParams"; }

   // Another question.
   void AddressQueryParamsIs(Zam::Ptr<Ip::Config const> const& ipConfig, Zam::String const& intfName,
                             Zam::String const& mgmtPrefix, AddrMatchType primaryMatch, AddrMatchType secondaryMatch,
                             Lumen::IpAddrWithMask const& addrWithMask);

   Zam::Ptr<Ip::Config const> const& ipConfig() const noexcept { return ipConfig_; }
   Zam::String const& intfName() const noexcept { return intfName_; }
   // What the names of management interfaces begin with. Every name begins with an empty one.
   Zam::String const& mgmtPrefix() const noexcept { return mgmtPrefix_; }
   AddrMatchType primaryMatch() const noexcept { return primaryMatch_; }
   AddrMatchType secondaryMatch() const noexcept { return secondaryMatch_; }
   Lumen::IpAddrWithMask const& addrWithMask() const noexcept { return addrWithMask_; }

 private:
   Zam::Ptr<Ip::Config const> ipConfig_;
   Zam::String intfName_;
   Zam::String mgmtPrefix_;
   AddrMatchType primaryMatch_{};
   AddrMatchType secondaryMatch_{};
   Lumen::IpAddrWithMask addrWithMask_;
};

// The same of an IPv6 address.
class KIV_EXPORT Address6QueryParams final : public Zam::PtrInterface {
 public:
   Address6QueryParams(Zam::Ptr<Ip6::Config const> const& ipConfig, Zam::String const& intfName,
                       Zam::String const& mgmtPrefix, Lumen::Ip6AddrWithMask const& addrWithMask) {
      Address6QueryParamsIs(ipConfig, intfName, mgmtPrefix, addrWithMask);
   }
   std::string_view fwkType() const noexcept override { return "Kiv::Address6QueryParams"; }

   void Address6QueryParamsIs(Zam::Ptr<Ip6::Config const> const& ipConfig, Zam::String const& intfName,
                              Zam::String const& mgmtPrefix, Lumen::Ip6AddrWithMask const& addrWithMask);

   Zam::Ptr<Ip6::Config const> const& ipConfig() const noexcept { return ipConfig_; }
   Zam::String const& intfName() const noexcept { return intfName_; }
   Zam::String const& mgmtPrefix() const noexcept { return mgmtPrefix_; }
   Lumen::Ip6AddrWithMask const& addrWithMask() const noexcept { return addrWithMask_; }

 private:
   Zam::Ptr<Ip6::Config const> ipConfig_;
   Zam::String intfName_;
   Zam::String mgmtPrefix_;
   Lumen::Ip6AddrWithMask addrWithMask_;
};

KIV_EXPORT Zam::Ptr<AddressQueryParams> addressQueryParamsFactory(
    Zam::Ptr<Ip::Config const> const& ipConfig, Zam::String const& intfName, Zam::String const& mgmtPrefix,
    AddrMatchType primaryMatch, AddrMatchType secondaryMatch, Lumen::IpAddrWithMask const& addrWithMask);
KIV_EXPORT Zam::Ptr<Address6QueryParams> address6QueryParamsFactory(Zam::Ptr<Ip6::Config const> const& ipConfig,
                                                                    Zam::String const& intfName,
                                                                    Zam::String const& mgmtPrefix,
                                                                    Lumen::Ip6AddrWithMask const& addrWithMask);

// The answer, with what to tell the user when it is no.
struct AddressQueryResult : Zam::ValueType {
   bool acceptable = false;
   Zam::String msg{};

   static constexpr auto zamDescription() {
      return Zam::describe<AddressQueryResult>("Kiv::AddressQueryResult",
                                               Zam::attribute("acceptable", &AddressQueryResult::acceptable),
                                               Zam::attribute("msg", &AddressQueryResult::msg));
   }
};

}  // namespace Kiv
