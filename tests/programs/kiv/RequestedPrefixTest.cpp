#include "programs/kiv/RequestedPrefix.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

namespace kiv {
namespace {

// "10.0.0.0/8" for a prefix, "host 10.0.0.1/32" for an address, else what is wrong.
template <class Prefix>
std::string requested(std::string_view word) {
   if (!looksLikePrefix(word)) {
      return "another word";
   }
   try {
      auto const request = requestedPrefix<Prefix>(word);
      return (request.hasMask ? "" : "host ") + request.prefix.stringValue();
   } catch (std::invalid_argument const& error) {
      return error.what();
   }
}

TEST(RequestedPrefix, IsAnAddressOrAPrefixOfTheFamily) {
   struct Case {
      char const* word;
      char const* ip;
      char const* ip6;
   };
   constexpr char const* no4 = "not an IPv4 address or prefix";
   constexpr char const* no6 = "not an IPv6 address or prefix";
   constexpr char const* other4 = "IPv6 where an IPv4 address or prefix should be";
   constexpr char const* other6 = "IPv4 where an IPv6 address or prefix should be";
   constexpr char const* long4 = "an IPv4 prefix is not longer than 32 bits";
   constexpr char const* long6 = "an IPv6 prefix is not longer than 128 bits";
   constexpr auto cases = std::to_array<Case>({
       {"10.0.0.1", "host 10.0.0.1/32", other6},
       {"10.0.0.1/32", "10.0.0.1/32", other6},
       {"10.0.0.0/8", "10.0.0.0/8", other6},
       {"0.0.0.0/0", "0.0.0.0/0", other6},
       {"0.0.0.0", "host 0.0.0.0/32", other6},
       {"255.255.255.255", "host 255.255.255.255/32", other6},
       {"10.0.0.1/8", "host bits set; the prefix is 10.0.0.0/8", other6},
       {"10.0.0.1/0", "host bits set; the prefix is 0.0.0.0/0", other6},
       {"10.0.0.1/31", "host bits set; the prefix is 10.0.0.0/31", other6},
       {"10.0.0.0/33", long4, other6},
       {"10.0.0.0/99999999999", long4, other6},
       {"::", other4, "host ::/128"},
       {"::/0", other4, "::/0"},
       {"2001:DB8::1", other4, "host 2001:db8::1/128"},
       {"2001:db8::/32", other4, "2001:db8::/32"},
       {"2001:db8::1/32", other4, "host bits set; the prefix is 2001:db8::/32"},
       {"::ffff:192.0.2.1", other4, "host ::ffff:192.0.2.1/128"},
       {"2001:db8::/129", other4, long6},
       {"10", no4, no6},
       {"10.0.0", no4, no6},
       {"10.0.0.256", no4, no6},
       {"10.0.0.0/", no4, no6},
       {"10.0.0.0/08", no4, no6},
       {"10.0.0.0/-1", no4, no6},
       {"10.0.0.0/8/8", no4, no6},
       {"/8", no4, no6},
       {"fe80::1%eth0", no4, no6},
       {":", no4, no6},
       {"e1/1", no4, no6},
       {"bgp", "another word", "another word"},
       {"none", "another word", "another word"},
   });
   for (Case const& c : cases) {
      EXPECT_EQ(requested<Lumen::Prefix>(c.word), c.ip) << c.word;
      EXPECT_EQ(requested<Lumen::Ip6Prefix>(c.word), c.ip6) << c.word;
   }
}

TEST(RequestedNexthop, IsOfEitherFamily) {
   EXPECT_EQ(requestedNexthop("10.0.0.1"), Lumen::IpGenAddr(Lumen::IpAddr::parse("10.0.0.1")));
   EXPECT_EQ(requestedNexthop("FE80::1"), Lumen::IpGenAddr(Lumen::Ip6Addr::parse("fe80::1")));
   for (char const* const word : {"10.0.0.0/8", "10.0.0", "any", "fe80::1%eth0", ":"}) {
      EXPECT_THROW(requestedNexthop(word), std::invalid_argument) << word;
   }
}

}  // namespace
}  // namespace kiv
