#include "ConfigTesting.h"

namespace Kiv::Testing {

namespace {

using Lumen::IntfId;

// What a case tells: "10.0.0.1/24 Ethernet1 | Ethernet1@red 10.0.0.2/24 secondary=10.0.1.1/24 | Ethernet2@red ..." is
// the added address and the interface that is to have it, then the interfaces that have addresses, and their VRFs.
struct Query {
   explicit Query(std::string const& text) {
      std::istringstream in(text);
      std::string part;
      std::getline(in, part, '|');
      auto const asked = partsOf(part);
      added = asked.at(0);
      own = asked.size() > 1 ? asked[1] : "Ethernet1";
      while (std::getline(in, part, '|')) {
         interfaces.push_back(partsOf(part));
      }
   }
   // Calls add(config, place, address) for each address of each interface.
   template <class Config, class IntfConfig, class Add>
   Zam::Ptr<Config const> config(Add const& add) const {
      auto const config = Zam::makePtr<Config>();
      for (auto const& words : interfaces) {
         IntfConfig intfConfig;
         auto const at = std::min(words[0].find('@'), words[0].size());
         if (at != words[0].size()) {
            intfConfig.vrf = Zam::makePtr<L3::VrfNameRef>(words[0].substr(at + 1));
         }
         for (auto word = std::next(words.begin()); word != words.end(); ++word) {
            auto const equals = word->find('=');
            add(intfConfig, equals != std::string::npos ? word->substr(0, equals) : "", word->substr(equals + 1));
         }
         config->intfConfigIs(IntfId::parse(words[0].substr(0, at)), intfConfig);
      }
      return config;
   }

   std::string added;
   std::string own;
   std::vector<std::vector<std::string>> interfaces;
};

void addTo(Ip::IpIntfConfig& config, std::string const& place, std::string const& text) {
   auto const addr = Lumen::IpAddrWithMask::parse(text);
   if (place.empty()) {
      config.addrWithMask = addr;
   } else if (place == "virtual") {
      config.virtualAddrWithMask = addr;
   } else {
      (place == "secondary" ? config.secondaryWithMask : config.virtualSecondaryWithMask).insert(addr);
   }
}

AddressQueryResult checked(Query const& query, AddrMatchType match) {
   if (query.added.find(':') != std::string::npos) {
      auto const config = query.config<Ip6::Config, Ip6::IntfConfig>(
          [](auto& intf, auto const&, auto const& text) { intf.addr.insert(Lumen::Ip6AddrWithMask::parse(text)); });
      return Address6AssignmentChecker().check(
          address6QueryParamsFactory(config, query.own, "Management", Lumen::Ip6AddrWithMask::parse(query.added)));
   }
   // The primary addresses are to be judged as the section says, the others by the next rule.
   auto const others = static_cast<AddrMatchType>((static_cast<int>(match) + 1) % 3);
   return AddressAssignmentChecker().check(addressQueryParamsFactory(query.config<Ip::Config, Ip::IpIntfConfig>(addTo),
                                                                     query.own, "Management", match, others,
                                                                     Lumen::IpAddrWithMask::parse(query.added)));
}

TEST(AddressAssignmentTest, table) {
   for (auto const match :
        {AddrMatchType::allowNoMatch, AddrMatchType::allowExactMatch, AddrMatchType::allowAddressMatch}) {
      for (auto const& [text, message] : casesOf("addresses, " + Zam::valueToStrep(match))) {
         auto const result = checked(Query(text), match);
         EXPECT_EQ(result.msg.bytes(), message) << text;
         EXPECT_EQ(result.acceptable, message.empty()) << text;
      }
   }
}

TEST(AddressAssignmentTest, withoutConfiguration) {
   constexpr auto exact = AddrMatchType::allowExactMatch;
   auto const params6 = [](char const* text) {
      return address6QueryParamsFactory(nullptr, "", "", Lumen::Ip6AddrWithMask::parse(text));
   };
   EXPECT_TRUE(Address6AssignmentChecker().check(params6("fe80::1/64")).msg.bytes().starts_with("'link-local'"));
   EXPECT_EQ(Address6AssignmentChecker().check(params6("::1/64")).msg.bytes(), "No interfaces");
   auto const zero = addressQueryParamsFactory(nullptr, "", "", exact, exact, {});
   EXPECT_EQ(AddressAssignmentChecker().check(zero).msg.bytes(), "No interfaces");
   zero->AddressQueryParamsIs(Zam::makePtr<Ip::Config>(), "", "", exact, exact, {});
   EXPECT_TRUE(AddressAssignmentChecker().check(zero).acceptable && zero->primaryMatch() == exact);
}

}  // namespace

}  // namespace Kiv::Testing
