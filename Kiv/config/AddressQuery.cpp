#include "Kiv/config/AddressQuery.h"

namespace Kiv {

void AddressQueryParams::AddressQueryParamsIs(Zam::Ptr<Ip::Config const> const& ipConfig, Zam::String const& intfName,
                                              Zam::String const& mgmtPrefix, AddrMatchType primaryMatch,
                                              AddrMatchType secondaryMatch, Lumen::IpAddrWithMask const& addrWithMask) {
   ipConfig_ = ipConfig;
   intfName_ = intfName;
   mgmtPrefix_ = mgmtPrefix;
   primaryMatch_ = primaryMatch;
   secondaryMatch_ = secondaryMatch;
   addrWithMask_ = addrWithMask;
}

void Address6QueryParams::Address6QueryParamsIs(Zam::Ptr<Ip6::Config const> const& ipConfig,
                                                Zam::String const& intfName, Zam::String const& mgmtPrefix,
                                                Lumen::Ip6AddrWithMask const& addrWithMask) {
   ipConfig_ = ipConfig;
   intfName_ = intfName;
   mgmtPrefix_ = mgmtPrefix;
   addrWithMask_ = addrWithMask;
}

Zam::Ptr<AddressQueryParams> addressQueryParamsFactory(Zam::Ptr<Ip::Config const> const& ipConfig,
                                                       Zam::String const& intfName, Zam::String const& mgmtPrefix,
                                                       AddrMatchType primaryMatch, AddrMatchType secondaryMatch,
                                                       Lumen::IpAddrWithMask const& addrWithMask) {
   return Zam::makePtr<AddressQueryParams>(ipConfig, intfName, mgmtPrefix, primaryMatch, secondaryMatch, addrWithMask);
}

Zam::Ptr<Address6QueryParams> address6QueryParamsFactory(Zam::Ptr<Ip6::Config const> const& ipConfig,
                                                         Zam::String const& intfName, Zam::String const& mgmtPrefix,
                                                         Lumen::Ip6AddrWithMask const& addrWithMask) {
   return Zam::makePtr<Address6QueryParams>(ipConfig, intfName, mgmtPrefix, addrWithMask);
}

}  // namespace Kiv
