#include "programs/kiv/SorterArguments.h"

#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"
#include "programs/kiv/CommandParser.h"
#include "programs/kiv/Commands.h"
#include "programs/kiv/RouteRequest.h"
#include "programs/state/Snapshot.h"

#include <gtest/gtest.h>

#include <sstream>

namespace kiv {
namespace {

constexpr char const* box = R"({"interfaces": {"e1": {"vrf": "red"}}, "nexthopGroups": {"g": 7},
                                "vrfs": {"red": {"id": 5}}})";

// What a sorter is told by a command line, as the sorter answers it. The library gives the inputs their names.
template <class Prefix>
class Told {
 public:
   explicit Told(std::string const& line)
       : inputs_(state::mountPrivately(state::readSnapshot(state::JsonDocument::parse("box.json", box)).state)),
         type_(*Zam::TypeRegistry::instance().type(isIp6 ? "Kiv::Route6Sorter" : "Kiv::RouteSorter")) {
      std::istringstream in(line);
      Options options;
      options.words.assign(std::istream_iterator<std::string>(in), {});
      Request const request = parseCommand(commands(), options);
      sorter_ = type_.construct(
          sorterArguments(inputs_, requestedVrfs(inputs_, request).back(), requestedRoutes<Prefix>(inputs_, request)));
   }

   template <class T>
   T attribute(char const* name) const {
      return std::any_cast<T>(type_.attribute(sorter_, name));
   }
   std::string intf() const {
      auto const status = attribute<Zam::Ptr<Interface::IntfStatus const>>("intfStatus");
      return status == nullptr ? "" : std::string(status->intfId().name()) + ' ' + std::to_string(status->vrfId());
   }
   bool hasFilters() const { return attribute<Zam::Ptr<Kiv::RouteFilterColl const>>("routeFilterColl") != nullptr; }

 private:
   static constexpr bool isIp6 = Prefix::maxLength == 128;

   state::Inputs inputs_;
   Zam::TypeInfo const& type_;
   std::any sorter_;
};

TEST(SorterArguments, TellTheSorterWhatTheUserAskedFor) {
   Kiv::registerTypes();
   Told<Lumen::Prefix> const plain("show ip route");
   EXPECT_TRUE(plain.attribute<Lumen::Prefix>("prefix").isNullPrefix());
   EXPECT_FALSE(plain.hasFilters());
   EXPECT_EQ(plain.intf(), "");
   EXPECT_FALSE(plain.attribute<bool>("isisOnly"));

   Told<Lumen::Prefix> const address("show ip route 10.0.0.1 bgp all interface e1 vrf red");
   EXPECT_EQ(address.attribute<Lumen::Prefix>("prefix"), Lumen::Prefix::parse("10.0.0.1/32"));
   EXPECT_FALSE(address.attribute<bool>("prefixHasMask"));
   EXPECT_FALSE(address.attribute<bool>("longerPrefixes"));
   EXPECT_TRUE(address.attribute<bool>("showHidden"));
   EXPECT_EQ(address.attribute<Zam::String>("protocol"), Zam::String("B"));
   EXPECT_EQ(address.attribute<U32>("vrfId"), 5U);
   EXPECT_EQ(address.intf(), "e1 5");
   EXPECT_TRUE(address.hasFilters());
   EXPECT_FALSE(address.attribute<bool>("isisOnly"));
}

TEST(SorterArguments, HaveTheInterfaceSwitchInIpv6) {
   Kiv::registerTypes();
   Told<Lumen::Ip6Prefix> const prefix("show ipv6 route 2001:db8::1/128 longer nexthop-group g");
   EXPECT_EQ(prefix.attribute<Lumen::Ip6Prefix>("prefix"), Lumen::Ip6Prefix::parse("2001:db8::1/128"));
   EXPECT_TRUE(prefix.attribute<bool>("prefixHasMask"));
   EXPECT_TRUE(prefix.attribute<bool>("longerPrefixes"));
   EXPECT_FALSE(prefix.attribute<bool>("intfFilter"));
   EXPECT_TRUE(prefix.hasFilters());

   Told<Lumen::Ip6Prefix> const interface("show ipv6 route interface e1");
   EXPECT_TRUE(interface.attribute<bool>("intfFilter"));
   EXPECT_EQ(interface.intf(), "e1 5");
   EXPECT_FALSE(interface.attribute<bool>("prefixHasMask"));
}

}  // namespace
}  // namespace kiv
