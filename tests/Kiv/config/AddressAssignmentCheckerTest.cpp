#include "ConfigTesting.h"

#include <bitset>

namespace Kiv::Testing {

namespace {

using Lumen::IntfId;

constexpr auto noMatch = AddrMatchType::allowNoMatch;
constexpr auto exact = AddrMatchType::allowExactMatch;
constexpr auto address = AddrMatchType::allowAddressMatch;

Zam::Ptr<L3::VrfNameRef const> vrf(char const* name) {
   return *name != '\0' ? Zam::Ptr<L3::VrfNameRef const>(Zam::makePtr<L3::VrfNameRef>(name)) : nullptr;
}

struct V4Addresses {
   using Addr = Lumen::IpAddrWithMask;
   using IntfConfig = Ip::IpIntfConfig;
   using Config = Ip::Config;
   static constexpr bool printsLengths = false;
   static constexpr std::array<char const*, 4> addresses{"10.0.0.1", "10.0.0.2", "10.0.128.1", "192.0.2.1"};
   static constexpr std::array<int, 4> lengths{8, 17, 24, 32};

   static void add(IntfConfig& config, Addr const& addr, unsigned place) {
      if (place == 0) {
         config.addrWithMask = addr;
      } else if (place == 1) {
         config.virtualAddrWithMask = addr;
      } else {
         (place == 2 ? config.secondaryWithMask : config.virtualSecondaryWithMask).insert(addr);
      }
   }
   // Those that count, with the rule for each; of the first two, one.
   static std::vector<std::pair<Addr, AddrMatchType>> of(IntfConfig const& config, AddrMatchType primary,
                                                         AddrMatchType secondary) {
      std::vector<std::pair<Addr, AddrMatchType>> all;
      auto const first = config.addrWithMask == Addr() ? config.virtualAddrWithMask : config.addrWithMask;
      if (first != Addr()) {
         all.push_back({first, primary});
      }
      for (auto const& set : {config.secondaryWithMask, config.virtualSecondaryWithMask}) {
         for (auto const& addr : set) {
            all.push_back({addr, secondary});
         }
      }
      return all;
   }
   static AddressQueryResult check(Zam::Ptr<Config const> const& config, std::string const& intf,
                                   std::string const& mgmt, AddrMatchType primary, AddrMatchType secondary,
                                   Addr const& addr) {
      return AddressAssignmentChecker().check(addressQueryParamsFactory(config, intf, mgmt, primary, secondary, addr));
   }
};

struct V6Addresses {
   using Addr = Lumen::Ip6AddrWithMask;
   using IntfConfig = Ip6::IntfConfig;
   using Config = Ip6::Config;
   static constexpr bool printsLengths = true;
   static constexpr std::array<char const*, 4> addresses{"2001:db8::1", "2001:db8::2", "2001:db8:0:8000::1",
                                                         "2001:db9::1"};
   static constexpr std::array<int, 4> lengths{31, 49, 64, 128};

   static void add(IntfConfig& config, Addr const& addr, unsigned /* place */) { config.addr.insert(addr); }
   static std::vector<std::pair<Addr, AddrMatchType>> of(IntfConfig const& config, AddrMatchType, AddrMatchType) {
      std::vector<std::pair<Addr, AddrMatchType>> all;
      for (auto const& addr : config.addr) {
         all.push_back({addr, exact});
      }
      return all;
   }
   static AddressQueryResult check(Zam::Ptr<Config const> const& config, std::string const& intf,
                                   std::string const& mgmt, AddrMatchType, AddrMatchType, Addr const& addr) {
      return Address6AssignmentChecker().check(address6QueryParamsFactory(config, intf, mgmt, addr));
   }
};

template <class Family>
class AddressAssignmentTest : public ::testing::Test {};
using AddressFamilies = ::testing::Types<V4Addresses, V6Addresses>;
TYPED_TEST_SUITE(AddressAssignmentTest, AddressFamilies);

// An address as its bits, to compare subnets without the types under test.
std::string bitsOf(Lumen::IpAddr addr) {
   return std::bitset<32>(addr.value()).to_string();
}
std::string bitsOf(Lumen::Ip6Addr const& addr) {
   return std::bitset<64>(addr.hi()).to_string() + std::bitset<64>(addr.lo()).to_string();
}

// What may be said of one address that an interface has; empty when it is no conflict.
template <class Family>
std::string complaint(typename Family::Addr const& added, typename Family::Addr const& existing, AddrMatchType match,
                      std::string const& own, std::string const& intf, bool bothManagement) {
   auto const text = added.address().stringValue();
   if (added.address() == existing.address()) {
      if (intf != own) {
         return "Address " + text + " is already assigned to interface " + intf;
      }
      if (match == address || (match == exact && added.length() == existing.length())) {
         return "";
      }
      return Family::printsLengths
                 ? "Address " + text + "/" + std::to_string(added.length()) + " is already assigned to this interface"
                 : "Address " + text + " is already assigned to interface " + intf;
   }
   auto const common = std::min(added.length(), existing.length());
   bool const overlap = bitsOf(added.address()).substr(0, common) == bitsOf(existing.address()).substr(0, common);
   if (!overlap || intf == own || bothManagement) {
      return "";
   }
   auto const subnet = [](auto const& addr) {
      auto const whole = addr.subnet().stringValue();
      return Family::printsLengths ? whole : whole.substr(0, whole.find('/'));
   };
   bool const isHost = !Family::printsLengths && added.length() == 32;
   return (isHost ? "Address " : "Subnet ") + subnet(added) + " overlaps with existing subnet " + subnet(existing) +
          " of interface " + intf;
}

TYPED_TEST(AddressAssignmentTest, agreesWithTheRulesOverRandomConfigurations) {
   using Addr = typename TypeParam::Addr;
   std::minstd_rand engine(44);
   auto const below = [&engine](std::size_t n) { return static_cast<unsigned>(engine() % n); };
   auto const randomAddr = [&] {
      return Addr::parse(std::string(TypeParam::addresses[below(4)]) + "/" +
                         std::to_string(TypeParam::lengths[below(4)]));
   };
   std::vector<std::string> const intfs{"Ethernet1", "Ethernet10", "Management1", "Management2", "FecId(0x1f)"};
   std::array<char const*, 4> const vrfs{"", "default", "red", "blue"};
   auto const nameOf = [](auto const& ref) { return ref ? ref->vrfName().bytes() : "default"; };
   int refusals = 0;
   for (int round = 0; round < 3000; ++round) {
      auto const config = Zam::makePtr<typename TypeParam::Config>();
      std::map<std::string, typename TypeParam::IntfConfig> byName;
      for (auto const& intf : intfs) {
         if (below(3) == 0) {
            continue;
         }
         auto& intfConfig = byName[intf];
         intfConfig.vrf = vrf(vrfs[below(4)]);
         for (unsigned i = below(4); i > 0; --i) {
            TypeParam::add(intfConfig, randomAddr(), below(4));
         }
         config->intfConfigIs(IntfId::parse(intf), intfConfig);
      }
      auto const own = intfs[below(intfs.size())];
      auto const mgmt = below(4) == 0 ? std::string() : std::string("Management");
      auto const primary = static_cast<AddrMatchType>(below(3));
      auto const secondary = static_cast<AddrMatchType>(below(3));
      auto const added = randomAddr();

      auto const ownVrf = byName.contains(own) ? nameOf(byName[own].vrf) : "default";
      std::set<std::string> possible;  // the first complaint of each interface
      for (auto const& [intf, intfConfig] : byName) {
         auto const isManagement = [&](std::string const& name) { return name.starts_with(mgmt); };
         for (auto const& [existing, match] : TypeParam::of(intfConfig, primary, secondary)) {
            auto const said =
                nameOf(intfConfig.vrf) == ownVrf
                    ? complaint<TypeParam>(added, existing, match, own, intf, isManagement(own) && isManagement(intf))
                    : "";
            if (!said.empty()) {
               possible.insert(said);
               break;
            }
         }
      }
      auto const result = TypeParam::check(config, own, mgmt, primary, secondary, added);
      EXPECT_EQ(result.acceptable, possible.empty()) << added << " " << result.msg.bytes();
      EXPECT_EQ(result.msg.empty(), result.acceptable);
      ASSERT_TRUE(result.acceptable || possible.contains(result.msg.bytes())) << added << " " << result.msg.bytes();
      refusals += result.acceptable ? 0 : 1;
   }
   EXPECT_TRUE(refusals > 300 && refusals < 2700) << refusals;
}

TYPED_TEST(AddressAssignmentTest, noInterfaceAndNoConfiguration) {
   auto const added = TypeParam::Addr::parse(std::string(TypeParam::addresses[0]) + "/24");
   auto const check = [&](Zam::Ptr<typename TypeParam::Config const> const& config, char const* intf) {
      return TypeParam::check(config, intf, "Management", noMatch, noMatch, added);
   };
   EXPECT_EQ(check(nullptr, "Ethernet1").msg.bytes(), "No interfaces");
   auto const config = Zam::makePtr<typename TypeParam::Config>();
   EXPECT_TRUE(check(config, "Ethernet1").acceptable);
   typename TypeParam::IntfConfig other;
   TypeParam::add(other, added, 0);
   config->intfConfigIs(IntfId::parse("Ethernet2"), other);
   // Names that no interface can have are those of other interfaces; the names must be the same to the letter.
   for (char const* const intf : {"", "a name with blanks", "a-name-of-far-too-many-letters", "ethernet2"}) {
      EXPECT_EQ(check(config, intf).msg.bytes(),
                std::string("Address ") + TypeParam::addresses[0] + " is already assigned to interface Ethernet2");
   }
}

// What is particular to IPv4 and what is particular to IPv6.
TEST(AddressAssignmentTexts, table) {
   for (auto const& [addresses, message] : casesOf("addresses: the added one, one of another interface")) {
      auto const parts = partsOf(addresses);
      auto const answer = [&]<class Family>(Family) {
         auto const config = Zam::makePtr<typename Family::Config>();
         typename Family::IntfConfig other;
         Family::add(other, Family::Addr::parse(parts[1]), 0);
         config->intfConfigIs(IntfId::parse("Ethernet2"), other);
         return Family::check(config, "Ethernet1", "Management", noMatch, noMatch, Family::Addr::parse(parts[0]));
      };
      auto const result = addresses.find(':') != std::string::npos ? answer(V6Addresses()) : answer(V4Addresses());
      EXPECT_EQ(result.msg.bytes(), message) << addresses;
      EXPECT_EQ(result.acceptable, message.empty()) << addresses;
   }
   auto const linkLocal = Lumen::Ip6AddrWithMask::parse("fe80::1/64");
   EXPECT_TRUE(Address6AssignmentChecker()
                   .check(address6QueryParamsFactory(nullptr, "", "", linkLocal))
                   .msg.bytes()
                   .starts_with("'link-local'"));
   auto const zero = addressQueryParamsFactory(nullptr, "", "", noMatch, noMatch, {});
   EXPECT_EQ(AddressAssignmentChecker().check(zero).msg.bytes(), "No interfaces");
   zero->AddressQueryParamsIs(Zam::makePtr<Ip::Config>(), "", "", exact, exact, {});
   EXPECT_TRUE(AddressAssignmentChecker().check(zero).acceptable && zero->primaryMatch() == exact);
}

}  // namespace

}  // namespace Kiv::Testing
