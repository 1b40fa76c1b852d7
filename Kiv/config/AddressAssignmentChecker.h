#pragma once

#include "Kiv/config/AddressQuery.h"

// Before an interface gets an address: whether another interface of its VRF, or the interface itself, has that address
// already, or one of a subnet that overlaps. The answer names the first conflict that is found; the order in which
// interfaces are looked at has no meaning. The configuration is read, never written.
namespace Kiv {

struct KIV_EXPORT AddressAssignmentChecker : Zam::ValueType {
   static constexpr auto zamDescription() {
      return Zam::describe<AddressAssignmentChecker>("Kiv::AddressAssignmentChecker");
   }
   AddressQueryResult check(Zam::Ptr<AddressQueryParams const> const& params) const;
};

struct KIV_EXPORT Address6AssignmentChecker : Zam::ValueType {
   static constexpr auto zamDescription() {
      return Zam::describe<Address6AssignmentChecker>("Kiv::Address6AssignmentChecker");
   }
   AddressQueryResult check(Zam::Ptr<Address6QueryParams const> const& params) const;
};

}  // namespace Kiv
