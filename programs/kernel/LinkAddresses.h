#pragma once

#include "programs/kernel/Records.h"

#include <map>
#include <vector>

namespace kernel {

// The addresses of links, in the order in which the kernel has them: an interface's primary one is the first.
class LinkAddresses {
 public:
   // The next one of a dump.
   void append(Address const& address) { byLink_[address.link].push_back(address); }
   // As a notification tells it; the first, whether it is new.
   bool addressIs(Address const& address);
   void addressDel(Address const& address);
   void linkDel(U32 link) { byLink_.erase(link); }

   std::map<U32, std::vector<Address>> const& byLink() const { return byLink_; }

 private:
   std::map<U32, std::vector<Address>> byLink_;
};

}  // namespace kernel
