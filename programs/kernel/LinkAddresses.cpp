#include "programs/kernel/LinkAddresses.h"

#include <algorithm>

namespace kernel {

namespace {

bool isSame(Address const& one, Address const& other) {
   return one.local == other.local && one.length == other.length;
}

bool isIp4(Address const& address) {
   return address.local.family() == Lumen::AddressFamily::ipv4;
}

// IPv4: primary addresses by rising range (falling scope), those of one range in the order in which they came, then
// secondary ones. IPv6: by falling range, those of one range the latest first.
bool comesAfter(Address const& one, Address const& added) {
   if (isIp4(one) != isIp4(added)) {
      return false;
   }
   return isIp4(added) ? !added.secondary && (one.secondary || one.scope < added.scope) : one.scope >= added.scope;
}

}  // namespace

bool LinkAddresses::addressIs(Address const& address) {
   auto& addresses = byLink_[address.link];
   auto const own = std::ranges::find_if(addresses, [&](Address const& a) { return isSame(a, address); });
   if (own != addresses.end() && own->secondary == address.secondary) {
      *own = address;
      return false;
   }
   addressDel(address);
   addresses.insert(std::ranges::find_if(addresses, [&](Address const& a) { return comesAfter(a, address); }), address);
   return true;
}

void LinkAddresses::addressDel(Address const& address) {
   std::erase_if(byLink_[address.link], [&](Address const& own) { return isSame(own, address); });
}

}  // namespace kernel
