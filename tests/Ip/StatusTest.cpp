#include "Ip/Status.h"

#include "Ip6/Status.h"
#include "support/Testing.h"

namespace {

struct V4 {
   using Status = Ip::Status;
   using Addr = Lumen::IpAddrWithMask;
   static Addr addr(std::string_view last) { return Addr::parse(std::string("10.0.0.").append(last) + "/24"); }
};
struct V6 {
   using Status = Ip6::Status;
   using Addr = Lumen::Ip6AddrWithMask;
   static Addr addr(std::string_view last) { return Addr::parse(std::string("2001:db8::").append(last) + "/64"); }
};

template <class Family>
struct IpStatus : testing::Test {
   using IntfStatus = typename Family::Status::IntfStatus;
   using Addrs = std::vector<typename Family::Addr>;
};
using Families = testing::Types<V4, V6>;
TYPED_TEST_SUITE(IpStatus, Families);

TYPED_TEST(IpStatus, WalksThePrimaryAddressWhenThereIsOneThenTheSecondaryOnes) {
   using Addresses = typename TestFixture::Addrs;
   auto const one = TypeParam::addr("1");
   auto const two = TypeParam::addr("2");
   auto const none = typename TypeParam::Addr();
   using Case = std::tuple<typename TypeParam::Addr, Addresses, Addresses>;
   for (auto const& [primary, secondary, expected] :
        {Case{none, {}, {}}, Case{one, {}, {one}}, Case{none, {two}, {two}}, Case{two, {one, two}, {two, one, two}}}) {
      typename TestFixture::IntfStatus intf;
      intf.primaryAddr = primary;
      intf.secondaryAddr = secondary;
      Addresses walked;
      intf.forEachAddr([&walked](auto const& addr) { walked.push_back(addr); });
      EXPECT_EQ(walked, expected);
   }
}

}  // namespace
