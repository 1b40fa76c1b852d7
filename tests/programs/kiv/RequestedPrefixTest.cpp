#include "programs/kiv/RequestedPrefix.h"

#include "tests/programs/kiv/ProgramRun.h"

#include <gtest/gtest.h>

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
   for (auto const& [word, expected] : testsupport::casesOf("an address or prefix, IPv4 | IPv6")) {
      EXPECT_EQ(requested<Lumen::Prefix>(word) + " | " + requested<Lumen::Ip6Prefix>(word), expected) << word;
   }
}

TEST(RequestedNexthop, IsOfEitherFamily) {
   EXPECT_EQ(requestedNexthop("10.0.0.1"), Lumen::IpGenAddr(Lumen::IpAddr::parse("10.0.0.1")));
   EXPECT_EQ(requestedNexthop("FE80::1"), Lumen::IpGenAddr(Lumen::Ip6Addr::parse("fe80::1")));
   for (char const* const word : {"10.0.0.0/8", "any", "fe80::1%eth0"}) {
      EXPECT_THROW(requestedNexthop(word), std::invalid_argument) << word;
   }
}

}  // namespace
}  // namespace kiv
