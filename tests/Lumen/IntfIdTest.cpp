#include "Lumen/IntfId.h"
#include "Zam/Error.h"
#include "support/Testing.h"

namespace Lumen::Test {
namespace {

TEST(IntfIdTest, OrdersByKindThenNaturally) {
   std::vector<IntfId> sorted{IntfId()};
   std::istringstream names(
       "0 00 001 01 1 2 10 18446744073709551616 18446744073709551617 Ethernet Ethernet01 Ethernet1 Ethernet1.10 "
       "Ethernet01/1 Ethernet1/2 Ethernet1/10 Ethernet1a Ethernet2 Ethernet2b Ethernet10 Ethernet18446744073709 "
       "vlan4094 \xc3\xa9");
   for (std::string name; names >> name;) {
      sorted.push_back(IntfId::named(name));
   }
   for (U64 const id : {U64{0}, U64{255}, U64{256}, ~U64{0}}) {
      sorted.push_back(IntfId::fromFecId(id));
   }
   sorted.push_back(IntfId::fromTunnelId(1));
   sorted.push_back(IntfId::fromNexthopGroup(0));
   for (std::size_t i = 0; i < sorted.size(); ++i) {
      for (std::size_t j = 0; j < sorted.size(); ++j) {
         ASSERT_EQ(sorted[i] <=> sorted[j], i <=> j) << sorted[i] << " and " << sorted[j];
      }
   }
}

}  // namespace
}  // namespace Lumen::Test
