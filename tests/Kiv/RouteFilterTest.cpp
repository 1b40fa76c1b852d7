#include "SorterTesting.h"
#include "Zam/ActivityLock.h"
#include "Zam/TypeRegistry.h"

namespace Kiv::Testing {

namespace {

using Filter = Zam::Ptr<RouteFilterBase const>;
using Lumen::IntfId;
using Lumen::IpGenAddr;

Filter ip(char const* address) {
   return routeFilterIpFactory(IpGenAddr::parse(address));
}
Zam::Ptr<Interface::IntfStatus const> status(char const* intf) {
   return Zam::makePtr<Interface::IntfStatus>(IntfId::parse(intf));
}
Filter intf(char const* name) {
   return routeFilterIntfFactory(status(name));
}
Filter group(U32 id, bool all = false) {
   return routeFilterNextHopGroupFactory(id, all);
}

// Vias are written "hop@interface", in the order of the FEC.
Zam::Ptr<CachedFec> fecOf(std::string const& vias) {
   auto fec = Zam::makePtr<CachedFec>(Vault::Fib::FecId::of(2, 5));
   std::istringstream in(vias);
   for (std::string text; in >> text;) {
      CachedVia via;
      via.hop = IpGenAddr::parse(text.substr(0, text.find('@')));
      via.intfId = IntfId::parse(text.substr(text.find('@') + 1));
      fec->viaIs(via, true);
   }
   return fec;
}
std::string viasOf(CachedFec const& fec) {
   std::string vias;
   for (auto const& [via, present] : fec.via()) {
      vias.append(vias.empty() ? "" : " ").append(via.hop.stringValue()).append("@").append(via.intfId.stringValue());
   }
   return vias;
}

constexpr char const* three = "1.1.1.1@Ethernet1 1.1.1.2@Ethernet2 1.1.1.3@Ethernet10";
constexpr char const* standIns = "1.1.1.1@Ethernet1 @FecId(0x0) @DynamicTunnel(0x0)";
constexpr char const* groups = "1.1.1.1@Ethernet1 1.1.1.1@NexthopGroup(0) @NexthopGroup(7)";

// What each filter passes, and what is left of the FEC when it discards; it hides and passes the same when it does not.
TEST(RouteFilterTest, passesAndPrunes) {
   std::string large;
   std::string largeLeft;
   for (int i = 0; i < 600; ++i) {  // more than one block of the FEC's map, so that blocks join under the walk
      bool const kept = i % 7 == 3 || (i > 100 && i < 200);
      auto const via = std::string(kept ? " 1.1.1.1" : " 1.1.1.2") + "@Ethernet" + std::to_string(i);
      large += via;
      largeLeft += kept ? via : "";
   }
   std::tuple<Filter, std::string, bool, std::string> const cases[] = {
       {ip("1.1.1.4"), three, true, ""},
       {ip("1.1.1.1"), large.substr(1), false, largeLeft.substr(1)},
       {ip("1.1.1.1"), "::ffff:1.1.1.1@Ethernet1", true, ""},
       {ip("0.0.0.0"), "@Ethernet1 0.0.0.0@Ethernet1 ::@Ethernet1", false, "0.0.0.0@Ethernet1"},
       {intf("Ethernet1"), three, false, "1.1.1.1@Ethernet1"},
       {intf("Ethernet01"), three, true, ""},
       {intf("FecId(0x0)"), standIns, false, "@FecId(0x0)"},
       {routeFilterIntfFactory(nullptr), three, true, three},
       {group(8), groups, true, groups},
       {group(0), groups, false, groups},
       {group(0), standIns, true, standIns},
       {group(0, true), standIns, true, standIns},
       {group(0, true), "@NexthopGroup(7)", false, "@NexthopGroup(7)"},
       {group(7, true), "", true, ""},
   };
   for (auto const& [filter, vias, hidden, left] : cases) {
      for (bool const discard : {false, true}) {
         auto const fec = fecOf(vias);
         EXPECT_EQ(filter->filter(fec, discard), hidden) << filter->fwkType() << " on " << vias;
         EXPECT_EQ(viasOf(*fec), discard ? left : vias) << filter->fwkType();
         EXPECT_TRUE(filter->filter(nullptr, discard)) << filter->fwkType();
      }
   }
}

// Hides every route, or none, and remembers how it was asked.
struct Asked final : RouteFilterBase {
   explicit Asked(bool hiding) : hides(hiding) {}
   std::string_view fwkType() const noexcept override { return "Asked"; }
   bool filter(Zam::Ptr<CachedFec> const&, bool discardNonMatchingVia) const override {
      asked += discardNonMatchingVia ? "discarding " : "keeping ";
      return hides;
   }
   bool hides;
   mutable std::string asked;
};

TEST(RouteFilterTest, collectionAsksUntilOneHides) {
   for (bool const discard : {false, true}) {
      auto const coll = routeFilterCollFactory(discard);
      EXPECT_FALSE(coll->filter(nullptr));
      auto const passing = Zam::makePtr<Asked>(false);
      coll->filterCollIs(passing);
      coll->filterCollIs(passing);
      EXPECT_FALSE(coll->filter(nullptr));
      EXPECT_EQ(passing->asked, discard ? "discarding " : "keeping ") << "it was added twice";
      EXPECT_TRUE(coll->filterCollDel(passing) && !coll->filterCollDel(passing));
      auto const a = Zam::makePtr<Asked>(true);
      auto const b = Zam::makePtr<Asked>(true);
      coll->filterCollIs(a);
      coll->filterCollIs(b);
      EXPECT_TRUE(coll->filter(nullptr));
      EXPECT_NE(a->asked.empty(), b->asked.empty()) << "the one behind was asked";
      coll->filterCollDelAll();
      EXPECT_FALSE(coll->filter(nullptr));
   }
}

TEST(RouteFilterTest, misuseOfTheCollectionIsAnAssertion) {
   auto const coll = routeFilterCollFactory(false);
   coll->filterCollIs(group(7));
   auto iterator = coll->filterCollIteratorConst();
   EXPECT_EQ((*iterator)->fwkType(), "Kiv::RouteFilterNextHopGroup");
   EXPECT_FALSE(++iterator);
   EXPECT_DEATH(++iterator, "iter_, source Kiv/CliSupport");
   EXPECT_DEATH(*iterator, "iter_");
   EXPECT_DEATH(coll->filterCollIs(nullptr), "filter, source Kiv/CliSupport, filterCollIs");
}

// The traces are switched on when a process starts, so each trial is one.
TEST(RouteFilterTest, traces) {
   GTEST_FLAG_SET(death_test_style, "threadsafe");
   auto const expectTraces = [](char const* setting, std::string const& traces) {
      ::setenv("ZAM_TRACE", setting, 1);
      auto const filterAll = [] {
         ip("1.1.1.2")->filter(fecOf(three), true);
         ip("1.1.1.4")->filter(fecOf("@Ethernet1"), true);
         intf("Ethernet10")->filter(fecOf("1.1.1.1@Ethernet1 @Ethernet10"), true);
         intf("Ethernet4")->filter(fecOf(three), false);
         routeFilterIntfFactory(nullptr)->filter(nullptr, true);
         group(7)->filter(fecOf(groups), true);
         group(8)->filter(fecOf(groups), true);
         std::_Exit(0);
      };
      EXPECT_EXIT(filterAll(), ::testing::ExitedWithCode(0), ::testing::Eq(traces));
      ::unsetenv("ZAM_TRACE");
   };
   std::string lines;
   std::string const of = "from fecId: 144115188075855877 filtering ";
   std::string const noMatch = " did not match the route with fecId: 144115188075855877";
   for (std::string const& line :
        {"Deleting hop: 1.1.1.1 " + of + "hop is: 1.1.1.2", "Deleting hop: 1.1.1.3 " + of + "hop is: 1.1.1.2",
         "show ip route nexthop 1.1.1.2" + noMatch, "Deleting hop:  " + of + "hop is: 1.1.1.4",
         "Deleting hop: 1.1.1.1 " + of + "interface is: Interface::IntfStatus(Ethernet10)",
         "show ip route interface Ethernet10" + noMatch,
         std::string("show ip route interface: given interface status is NULL"),
         std::string("show ip route nexthop group do not filter")}) {
      lines += "Kiv/CliSupport filter: " + line + "\n";
   }
   expectTraces("Kiv/CliSupport=9", lines);
   expectTraces("Kiv/CliSupport=012345678", "");
}

// As the scripting layer does it: each filter is made by name and goes into the collection as it came.
TEST(RouteFilterTest, isUsedByName) {
   registerTypes();
   auto const& registry = Zam::TypeRegistry::instance();
   auto const made = [&](char const* name, std::vector<std::any> const& arguments) {
      return registry.type(name)->construct(arguments);
   };
   auto coll = made("Kiv::RouteFilterColl", {true});
   auto const& collType = *registry.typeOf(coll);
   char const* const vias = "1.1.1.1@Ethernet1 1.1.1.2@NexthopGroup(7)";
   std::tuple<std::any, bool, char const*> cases[] = {
       {made("Kiv::RouteFilterIp", {Zam::fromText("'1.1.1.2'")}), false, "1.1.1.2@NexthopGroup(7)"},
       {made("Kiv::RouteFilterIntf", {status("Ethernet1")}), false, "1.1.1.1@Ethernet1"},
       {made("Kiv::RouteFilterNextHopGroup", {8, false}), true, vias},
       {made("Kiv::RouteFilterNextHopGroup", {8, true}), false, vias},
   };
   for (auto& [filter, hidden, left] : cases) {
      auto const& type = *registry.typeOf(filter);
      EXPECT_TRUE(std::any_cast<bool>(type.call(filter, "filter", {{nullptr, true}})));
      std::vector<std::any> attributes;  // in the constructor's order, so they make another filter like it
      for (auto const name : type.attributes()) {
         attributes.push_back(type.attribute(filter, name));
      }
      collType.call(coll, "filterCollIs", {{filter}});
      collType.call(coll, "filterCollIs", {{type.construct(attributes)}});
      EXPECT_EQ(std::any_cast<RouteFilterColl::Filters>(collType.attribute(coll, "filterColl")).size(), 2U);
      EXPECT_TRUE(std::any_cast<bool>(collType.call(coll, "filterCollDel", {{filter}})));
      auto const fec = fecOf(vias);
      EXPECT_EQ(std::any_cast<bool>(collType.call(coll, "filter", {{fec}})), hidden);
      EXPECT_EQ(viasOf(*fec), left);
      collType.call(coll, "filterCollDelAll");
   }
   collType.attributeIs(coll, "filterAll", true);
   EXPECT_TRUE(std::any_cast<bool>(collType.attribute(coll, "filterAll")));
   EXPECT_THROW(collType.call(coll, "filterCollIs", {{coll}}), Zam::TypeError);
   EXPECT_THROW(made("Kiv::RouteFilterNextHopGroup", {-1, false}), Zam::RangeError);
}

// What the sorter asks for, and what the route's FEC offers.
TEST(FilteredRoutesTest, sorterRestrictions) {
   using enum V6::RouteType;
   constexpr char const* vanished = "vanished";
   constexpr char const* two = "fe80::1@Ethernet1 fe80::1@Ethernet2";
   using Case = std::tuple<V6::RouteType, char const*, char const*, bool, char const*, bool>;
   Case const cases[] = {
       {staticConfig, "S", two, false, "", false},
       {staticConfig, "B", two, false, "", true},
       {staticConfig, "", "fe80::1@", false, "", true},  // not printable
       {nexthopGroup, "", vanished, false, "", true},
       {staticConfig, "", two, true, "Ethernet2", false},
       {staticConfig, "", two, true, "Ethernet3", true},
       {staticConfig, "", two, true, "", true},
       {staticConfig, "", two, false, "Ethernet3", false},
       {staticConfig, "", "", false, "", false},
       {staticConfig, "", "", false, "Ethernet1", true},
       {staticConfig, "", "", true, "", true},
       // Routes to the box itself.
       {receive, "", vanished, true, "", false},
       {receiveSelf, "S", two, false, "", true},
   };
   for (auto const& [type, protocol, vias, intfFilter, intf, hidden] : cases) {
      auto const fec = fecOf(vias == vanished ? "" : vias);
      Route6Sorter::Inputs inputs;
      inputs.protocol = protocol;
      inputs.familySwitch = intfFilter;
      inputs.intfStatus = *intf != '\0' ? status(intf) : nullptr;
      auto const sorter = route6SorterFactory(inputs);
      if (vias != vanished) {
         sorter->fecIs(fec);
      }
      V6::Route route;
      route.routeType = type;
      route.fecId = fec->fecId();
      EXPECT_EQ(isRouteFiltered(sorter.get(), route), hidden) << protocol << " " << vias << " " << intf;
      sorter->sortedRouteIs(V6::Prefix::parse("2001:db8::/32"), route);
      EXPECT_EQ(getFilteredRoutesCount(sorter.get()), hidden ? 1U : 0U);
   }
   auto const sorter4 = routeSorterFactory(RouteSorter::Inputs());
   sorter4->sortedRouteIs(V4::Prefix::parse("10.0.0.0/8"), {});  // without a FEC
   EXPECT_EQ(getFilteredRoutesCount(sorter4.get()), 0U);
}

// Another activity changes the selection when the count lets it in, behind the 2001st route.
TEST(FilteredRoutesTest, countsOnceWhatStaysWhileTheSelectionChanges) {
   constexpr U64 last = 2499;
   constexpr U64 at = 2000;
   auto const prefix = [](U64 i) { return V6::Prefix(Lumen::Ip6Addr((0x20010db9ULL << 32) + (i << 8), 0), 64); };
   for (U64 const gone : {at - 1, at}) {
      auto const sorter = route6SorterFactory(Route6Sorter::Inputs());
      for (U64 i = 0; i <= last; ++i) {
         sorter->sortedRouteIs(prefix(i), {});  // without a FEC, so hidden
      }
      std::jthread other;
      bool changed = false;
      Zam::ScopedActivity const activity;
      other = std::jthread([&] {
         Zam::ScopedActivity const theirs;
         sorter->sortedRouteDel(prefix(gone));
         sorter->sortedRouteIs(V6::Prefix::parse("::/0"), {});  // in front of where the count is
         sorter->sortedRouteDel(prefix(at + 2));
         sorter->sortedRouteIs(prefix(at + 1), {});  // replaced
         sorter->sortedRouteIs(prefix(last + 1), {});
         sorter->sortedRouteIs(prefix(last + 2), {});
         changed = true;
      });
      for (int counts = 0; !changed && counts < 5000; ++counts) {
         auto const count = getFilteredRoutesCount(sorter.get());
         EXPECT_EQ(count, last + 1 + (changed ? 1 : 0));
      }
      EXPECT_TRUE(changed);
   }
}

}  // namespace

}  // namespace Kiv::Testing
