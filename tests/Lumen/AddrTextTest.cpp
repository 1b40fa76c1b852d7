#include "Lumen/RandomValues.h"
#include "Zam/Error.h"

#include <arpa/inet.h>

// Texts of addresses: tables of the forms, and the C library as an independent judge over random and damaged texts.
namespace Lumen::Test {
namespace {

template <class T>
std::optional<T> parsed(std::string_view text) {
   try {
      return T::parse(text);
   } catch (Zam::ParseError const&) {
      return std::nullopt;
   }
}

std::array<U8, 4> bytesOf(IpAddr addr) {
   auto const octet = [addr](int shift) { return static_cast<U8>(addr.value() >> shift); };
   return {octet(24), octet(16), octet(8), octet(0)};
}
std::array<U8, 16> bytesOf(Ip6Addr addr) {
   return addr.bytes();
}

template <class Addr>
constexpr int systemFamily = Addr::width == 32 ? AF_INET : AF_INET6;

template <class Addr>
std::optional<std::array<U8, Addr::width / 8>> systemParsed(std::string const& text) {
   std::array<U8, Addr::width / 8> bytes;
   bool const good = inet_pton(systemFamily<Addr>, text.c_str(), bytes.data()) == 1;
   return good ? std::optional(bytes) : std::nullopt;
}

template <class Addr>
std::string systemText(Addr addr) {
   std::array<char, INET6_ADDRSTRLEN> text;
   return inet_ntop(systemFamily<Addr>, bytesOf(addr).data(), text.data(), text.size());
}

// The system writes all of ::/96 that has something in the upper half of its tail with a dotted tail; RFC 5952 leaves
// that to addresses that are known to embed one.
bool isWrittenAlike(IpAddr) {
   return true;
}
bool isWrittenAlike(Ip6Addr addr) {
   return addr.hi() != 0 || addr.lo() >> 32 != 0 || addr.lo() >> 16 == 0;
}

std::string damaged(std::string text, Random& random) {
   constexpr std::string_view characters = "0123456789abcdefABCDEF::..xg/ +-%";
   for (U64 left = 1 + random.below(2); left != 0; --left) {
      auto const at = random.below(text.size() + 1);
      auto const piece = random.chance(3) ? text.substr(random.below(text.size() + 1), random.below(4))
                                          : std::string(random.below(2), characters[random.below(characters.size())]);
      text.replace(at, random.below(2), piece);
   }
   return text;
}

// The same address as people write it: any zero run compressed or none, upper case, leading zeros, a dotted tail.
std::string loose(IpAddr addr, Random&) {
   return addr.stringValue();
}
std::string loose(Ip6Addr addr, Random& random) {
   auto const bytes = addr.bytes();
   std::string text;
   unsigned const gap = static_cast<unsigned>(random.below(9));
   unsigned const groups = random.chance(3) ? 6 : 8;
   bool compressed = false;
   for (unsigned i = 0; i < groups; ++i) {
      unsigned const group = bytes[2 * i] * 256U + bytes[2 * i + 1];
      if (i >= gap && group == 0 && (!compressed || text.ends_with("::"))) {
         text += compressed ? "" : text.empty() ? "::" : ":";
         compressed = true;
         continue;
      }
      constexpr char const* forms[] = {"%x:", "%X:", "%04x:", "%02X:"};
      std::array<char, 8> form;
      std::snprintf(form.data(), form.size(), forms[random.below(4)], group);
      text += form.data();
   }
   if (groups == 6) {
      return text + IpAddr(static_cast<U32>(addr.lo())).stringValue();
   }
   return text.ends_with("::") ? text : text.substr(0, text.size() - 1);
}

template <class Addr>
class AddrTextTest : public testing::Test {};
using Families = testing::Types<IpAddr, Ip6Addr>;
TYPED_TEST_SUITE(AddrTextTest, Families);

TYPED_TEST(AddrTextTest, PrintsAsTheSystemDoes) {
   Random random(1);
   for (int i = 0; i < 100000; ++i) {
      auto const addr = random.value<TypeParam>();
      if (isWrittenAlike(addr)) {
         ASSERT_EQ(addr.stringValue(), systemText(addr));
      }
   }
}

TYPED_TEST(AddrTextTest, ReadsWhatTheSystemReadsAndNothingElse) {
   Random random(2);
   int accepted = 0;
   int refused = 0;
   for (int i = 0; i < 100000; ++i) {
      auto text = loose(random.value<TypeParam>(), random);
      text = random.chance(4) ? text : damaged(text, random);
      auto const mine = parsed<TypeParam>(text);
      auto const systems = systemParsed<TypeParam>(text);
      ASSERT_EQ(mine.has_value(), systems.has_value()) << text;
      ASSERT_TRUE(!mine || bytesOf(*mine) == *systems) << text;
      ++(mine ? accepted : refused);
   }
   EXPECT_GT(accepted, 20000);
   EXPECT_GT(refused, 20000);
}

}  // namespace
}  // namespace Lumen::Test
