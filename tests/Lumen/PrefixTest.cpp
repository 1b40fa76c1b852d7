#include "Lumen/RandomValues.h"
#include "Zam/Error.h"

namespace Lumen::Test {
namespace {

bool bit(IpAddr addr, unsigned i) {
   return (addr.value() >> (31 - i) & 1U) != 0;
}
bool bit(Ip6Addr addr, unsigned i) {
   return ((i < 64 ? addr.hi() : addr.lo()) >> (63 - i % 64) & 1U) != 0;
}

// The order as it is defined, bit by bit.
template <class Addr>
bool before(BasicPrefix<Addr> const& a, BasicPrefix<Addr> const& b) {
   if (a.isNullPrefix() || b.isNullPrefix()) {
      return !a.isNullPrefix();
   }
   for (unsigned i = 0; i < std::min(a.length(), b.length()); ++i) {
      if (bit(a.address(), i) != bit(b.address(), i)) {
         return bit(b.address(), i);
      }
   }
   return a.length() < b.length();
}

template <class Addr>
bool covers(BasicPrefix<Addr> const& a, Addr addr) {
   for (unsigned i = 0; i < a.length(); ++i) {
      if (bit(a.address(), i) != bit(addr, i)) {
         return false;
      }
   }
   return true;
}

template <class Addr>
class PrefixTest : public testing::Test {
 protected:
   // Prefixes that nest: all within a few addresses.
   static std::vector<BasicPrefix<Addr>> nested(std::size_t count) {
      Random random(count);
      std::vector<Addr> const addrs{random.value<Addr>(), random.value<Addr>(), Addr(), ~Addr()};
      std::set<BasicPrefix<Addr>> prefixes;
      while (prefixes.size() < count) {
         auto const addr =
             addrs[random.below(addrs.size())] ^ (random.value<Addr>() & ~Addr::mask(random.length<Addr>()));
         prefixes.insert(BasicPrefix<Addr>::masked(addr, random.length<Addr>()));
      }
      return {prefixes.begin(), prefixes.end()};
   }
};

using Families = testing::Types<IpAddr, Ip6Addr>;
TYPED_TEST_SUITE(PrefixTest, Families);

TYPED_TEST(PrefixTest, OrderIsByTheCommonBitsThenShorterFirst) {
   auto prefixes = this->nested(600);
   prefixes.emplace_back();
   for (auto const& a : prefixes) {
      for (auto const& b : prefixes) {
         ASSERT_EQ(a < b, a != b && before(a, b)) << a << " and " << b;
      }
   }
}

TYPED_TEST(PrefixTest, ContainsWhatItsBitsCover) {
   Random random(7);
   auto const prefixes = this->nested(500);
   for (auto const& a : prefixes) {
      for (auto const& b : prefixes) {
         ASSERT_EQ(a.contains(b), a.length() <= b.length() && covers(a, b.address())) << a << " and " << b;
         ASSERT_EQ(a.contains(b.address()), covers(a, b.address())) << a << " and " << b;
      }
      auto const length = random.length<TypeParam>();
      auto const truncated = a.truncated(length);
      ASSERT_EQ(truncated.length(), std::min(length, a.length()));
      ASSERT_TRUE(truncated.contains(a)) << truncated << " and " << a;
   }
}

TYPED_TEST(PrefixTest, HostBitsAndLengthsAreChecked) {
   using P = BasicPrefix<TypeParam>;
   using WithMask = BasicAddrWithMask<TypeParam>;
   auto const address = TypeParam::mask(P::maxLength);
   for (U8 bits = 0; bits < P::maxLength; ++bits) {
      EXPECT_THROW(P(address, bits), Zam::RangeError);
      EXPECT_THROW(P(address ^ TypeParam::mask(P::maxLength - 1), bits), Zam::RangeError);
      ASSERT_EQ(P(TypeParam::mask(bits), bits), P::masked(address, bits));
      ASSERT_EQ(WithMask(address, bits).subnet(), P::masked(address, bits));
   }
   for (U8 const bits : {static_cast<U8>(P::maxLength + 1), U8{0xff}}) {
      EXPECT_THROW(P(TypeParam(), bits), Zam::RangeError);
      EXPECT_THROW(P::masked(address, bits), Zam::RangeError);
      EXPECT_THROW(WithMask(address, bits), Zam::RangeError);
   }
}

TEST(IpGenPrefixTest, OrdersByBytesThenLengthAndOnlyThenByFamily) {
   std::vector<std::string> const texts{"0.0.0.0/0",      "::/0",        "0.0.0.0/8", "::/8",
                                        "::1/128",        "10.0.0.0/8",  "a00::/16",  "a01::/16",
                                        "10.1.0.0/24",    "224.0.0.0/4", "ff00::/8",  "255.255.255.255/32",
                                        "ffff:ffff::/64", "none"};
   for (std::size_t i = 0; i < texts.size(); ++i) {
      for (std::size_t j = 0; j < texts.size(); ++j) {
         ASSERT_EQ(IpGenPrefix::parse(texts[i]) < IpGenPrefix::parse(texts[j]), i < j) << texts[i] << " " << texts[j];
      }
   }
   auto const v4 = IpGenPrefix::parse("1.2.3.0/24");
   auto const v6 = IpGenPrefix::parse("102:300::/24");
   EXPECT_NE(v4, v6);
   EXPECT_TRUE(v4.byAddressAndLength(v6) == 0);
   EXPECT_TRUE(v4.byAddressAndLength(IpGenPrefix::parse("102:300::/25")) < 0);
}

}  // namespace
}  // namespace Lumen::Test
