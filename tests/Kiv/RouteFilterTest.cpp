#include "SorterTesting.h"
#include "tests/support/Cases.h"

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
   for (auto const& via : fec.record().vias()) {
      vias.append(vias.empty() ? "" : " ").append(via.hop().stringValue());
      vias.append("@").append(fec.intfId(via).stringValue());
   }
   return vias;
}

// A filter on the vias of a FEC, as the cases write it: "KIND WHAT | VIAS".
struct FilterCase {
   explicit FilterCase(std::string const& text) : vias(text.substr(text.find('|') + 1)) {
      std::string kind;
      std::string what;
      std::istringstream(text) >> kind >> what;
      filter = kind == "ip"     ? ip(what.c_str())
               : kind == "intf" ? intf(what.c_str())
               : kind == "null" ? routeFilterIntfFactory(nullptr)
                                : group(static_cast<U32>(std::stoul(what)), kind == "any-group");
   }
   std::string vias;
   Filter filter;
};

// What each filter passes, and what is left of the FEC when it discards; it hides and passes the same when it does not.
TEST(RouteFilterTest, passesAndPrunes) {
   auto cases = testsupport::casesOf("Kiv/cases.txt", "what filters pass and what they leave");
   auto& [large, left] = cases.emplace_back("ip 1.1.1.1 |", "shown");
   for (int i = 0; i < 600; ++i) {  // more than one block of the FEC's map, so that blocks join under the walk
      bool const kept = i % 7 == 3 || (i > 100 && i < 200);
      auto const via = std::string(kept ? " 1.1.1.1" : " 1.1.1.2") + "@Ethernet" + std::to_string(i);
      large += via;
      left += kept ? via : "";
   }
   for (auto const& [text, expected] : cases) {
      FilterCase const in(text);
      for (bool const discard : {false, true}) {
         auto const fec = fecOf(in.vias);
         auto const before = viasOf(*fec);
         std::string const said = in.filter->filter(fec, discard) ? "hidden" : "shown";
         auto const after = viasOf(*fec);
         EXPECT_EQ(said, expected.substr(0, expected.find(' '))) << text;
         EXPECT_TRUE(discard || after == before) << text;
         EXPECT_TRUE(!discard || said + (after.empty() ? "" : ' ' + after) == expected) << text << ": " << after;
         EXPECT_TRUE(in.filter->filter(nullptr, discard)) << text;
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

// What the sorter asks for, and what the route's FEC offers.
TEST(FilteredRoutesTest, sorterRestrictions) {
   using enum V6::RouteType;
   std::map<std::string, V6::RouteType> const types{
       {"static", staticConfig}, {"nexthopGroup", nexthopGroup}, {"receive", receive}, {"receiveSelf", receiveSelf}};
   for (auto const& [text, expected] : testsupport::casesOf(
            "Kiv/cases.txt", "what a sorter restricts: type, protocol, interface (behind + with the switch), vias")) {
      std::istringstream in(text);
      std::string type, protocol, interface, vias;
      std::getline(in >> type >> protocol >> interface >> std::ws, vias);
      bool const isVanished = vias == "vanished";
      auto const fec = fecOf(isVanished ? "" : vias);
      Route6Sorter::Inputs inputs;
      inputs.protocol = protocol == "-" ? "" : protocol;
      inputs.familySwitch = interface.starts_with('+');
      interface.erase(0, inputs.familySwitch ? 1 : 0);
      inputs.intfStatus = interface.empty() || interface == "-" ? nullptr : status(interface.c_str());
      auto const sorter = route6SorterFactory(inputs);
      if (!isVanished) {
         sorter->fecIs(fec);
      }
      V6::Route route;
      route.routeType = types.at(type);
      route.fecId = fec->fecId();
      EXPECT_EQ(isRouteFiltered(sorter.get(), route), expected == "hidden") << text;
      sorter->sortedRouteIs(V6::Prefix::parse("2001:db8::/32"), route);
      EXPECT_EQ(getFilteredRoutesCount(sorter.get()), expected == "hidden" ? 1U : 0U) << text;
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
      auto const change = [&] {
         sorter->sortedRouteDel(prefix(gone));
         sorter->sortedRouteIs(V6::Prefix::parse("::/0"), {});  // in front of where the count is
         sorter->sortedRouteDel(prefix(at + 2));
         sorter->sortedRouteIs(prefix(at + 1), {});  // replaced
         sorter->sortedRouteIs(prefix(last + 1), {});
         sorter->sortedRouteIs(prefix(last + 2), {});
      };
      changedDuringAYield(change, [&](bool const& changed) {
         auto const count = getFilteredRoutesCount(sorter.get());
         EXPECT_EQ(count, last + 1 + (changed ? 1 : 0));
      });
   }
}

}  // namespace

}  // namespace Kiv::Testing
