#include "Interface/Management.h"
#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"
#include "tests/Kiv/SelectionOracle.h"
#include "tests/Vault/VaultTesting.h"

#include <map>

// Routes counted by category and mask length, against what the words of the route table say, against tables written
// down here, and against the plain loops of the oracle.
namespace Kiv::Testing {

namespace {

using Categories = std::map<std::string, U32>;

struct S4 : V4 {
   using Summary = RouteSummary;
   static constexpr char const* typeName = "Kiv::RouteSummary";
   static constexpr U8 largestType = 44;
   static constexpr std::array<char const*, 45> categories{"",
                                                           "internal",
                                                           "internal",
                                                           "internal",
                                                           "internal",
                                                           "attached",
                                                           nullptr,
                                                           "static",
                                                           "vcs",
                                                           "internal",
                                                           "rip",
                                                           "connected",
                                                           "",
                                                           "aggregate",
                                                           "aggregate",
                                                           "ospfIntraArea ospfTotal",
                                                           "ospfInterArea ospfTotal",
                                                           "ospfExternal1 ospfTotal",
                                                           "ospfExternal2 ospfTotal",
                                                           "nssaExternal1 ospfTotal",
                                                           "nssaExternal2 ospfTotal",
                                                           "bgpInternal bgpTotal",
                                                           "bgpInternal bgpTotal",
                                                           "bgpExternal bgpTotal",
                                                           "bgpExternal bgpTotal",
                                                           "bgpLocal bgpTotal",
                                                           "isisLevel1 isisTotal",
                                                           "isisLevel2 isisTotal",
                                                           "staticNexthopGroup",
                                                           "internal",
                                                           "ospfv3Total",
                                                           "ospfv3Total",
                                                           "ospfv3Total",
                                                           "ospfv3Total",
                                                           "ospfv3Total",
                                                           "DhcpDefaultRoute",
                                                           "internal",
                                                           "dynamicPolicy",
                                                           nullptr,
                                                           "l2NexthopGroup",
                                                           "routeCacheConnected",
                                                           "routeCacheForward",
                                                           "gribi",
                                                           "!",
                                                           ""};
};

struct S6 : V6 {
   using Summary = Route6Summary;
   static constexpr char const* typeName = "Kiv::Route6Summary";
   static constexpr U8 largestType = 31;
   static constexpr std::array<char const*, 32> categories{"",
                                                           "internal",
                                                           "internal",
                                                           "attached",
                                                           "static",
                                                           "internal",
                                                           "",
                                                           "connected",
                                                           "",
                                                           "aggregate",
                                                           "aggregate",
                                                           "ospfTotal",
                                                           "bgpTotal",
                                                           "bgpInternal bgpTotal",
                                                           "bgpInternal bgpTotal",
                                                           "bgpExternal bgpTotal",
                                                           "bgpExternal bgpTotal",
                                                           "bgpLocal bgpTotal",
                                                           "isisLevel1 isisTotal",
                                                           "isisLevel2 isisTotal",
                                                           "staticNexthopGroup",
                                                           "internal",
                                                           "dhcp",
                                                           "internal",
                                                           "dynamicPolicy",
                                                           nullptr,
                                                           "l2NexthopGroup",
                                                           "routeCacheConnected",
                                                           "routeCacheForward",
                                                           "gribi",
                                                           "!",
                                                           ""};
};

// Of a route, by words that are separated by blanks.
void addCategories(Categories& counts, std::string words) {
   while (true) {
      auto const blank = words.find(' ');
      ++counts[words.substr(0, blank)];
      if (blank == std::string::npos) {
         return;
      }
      words.erase(0, blank + 1);
   }
}

template <class Summary>
Categories categoriesOf(Summary const& summary) {
   Categories counts;
   for (auto const& [category, count] : summary.routeCountByType) {
      counts[category.bytes()] = count;
   }
   return counts;
}

template <class Family>
class Summaries : public ::testing::Test {
 protected:
   using Summary = typename Family::Summary;
   using RouteType = typename Family::RouteType;

   Summary summary() const {
      Summary made;
      made.routingStatus = box_.inputs.routingStatus;
      made.vrfIdMap = box_.vrfs;
      return made;
   }
   Summary loaded() const {
      Summary made = summary();
      made.loadInternalStructures();
      return made;
   }
   // A different prefix for each number.
   static std::string prefixText(U32 number) {
      return Family::viasShareRouteLine ? "10." + std::to_string(number) + ".0.0/16"
                                        : "2001:db8:" + std::to_string(number) + "::/48";
   }

   Box<Family> box_;
};

using SummaryFamilies = ::testing::Types<S4, S6>;
TYPED_TEST_SUITE(Summaries, SummaryFamilies);

TYPED_TEST(Summaries, CountEveryTypeUnderItsCategories) {
   Categories expected;
   U32 total = 0;
   for (U32 type = 0; type < 256; ++type) {
      auto const routeType = static_cast<typename TypeParam::RouteType>(type);
      bool const isCounted = type <= TypeParam::largestType;
      char const* const words = isCounted ? TypeParam::categories[type] : nullptr;
      if (words != nullptr && *words == '!') {
         continue;
      }
      this->box_.routeIs(this->prefixText(type).c_str(), routeType);
      total += isCounted ? 1 : 0;
      if (words != nullptr) {
         addCategories(expected, words);
      }
   }
   auto const summary = this->loaded();
   EXPECT_EQ(categoriesOf(summary), expected);
   EXPECT_EQ(summary.totalNumRoutes, static_cast<S32>(total));
   ASSERT_EQ(summary.routeCountByMask.size(), 1U);
   EXPECT_EQ(summary.routeCountByMask.begin()->value, total);
}

TYPED_TEST(Summaries, OfAnEmptyBoxHoldNothing) {
   auto summary = this->loaded();
   summary.loadAttachedRoutes();
   EXPECT_TRUE(summary.routeCountByType.empty());
   EXPECT_TRUE(summary.routeCountByMask.empty());
   EXPECT_EQ(summary.totalNumRoutes, 0);
   typename TestFixture::Summary nothing;
   nothing.loadInternalStructures();
   nothing.loadAttachedRoutes();
   if constexpr (requires { nothing.loadRouteCacheRoutes(); }) {
      nothing.loadRouteCacheRoutes();
   }
   EXPECT_FALSE(isSet(nothing));
}

TYPED_TEST(Summaries, DieOfTheSdkStaticType) {
   this->box_.routeIs(TypeParam::nested[0], TypeParam::RouteType::staticOpalSdk);
   EXPECT_DEATH(this->loaded(), std::string("routeType staticOpalSdk can not be present in FIB vault.*void ") +
                                    TypeParam::typeName + "::loadInternalStructures\\(\\)");
}

// A static route lasts unless its configuration says otherwise, or only the list of those added at run time has it.
TYPED_TEST(Summaries, TellStaticRoutesApart) {
   constexpr U32 bits = 16;
   constexpr U8 preference = 5;
   auto const configured = Zam::makePtr<Routing::RouteList>();
   auto const dynamic = Zam::makePtr<Routing::RouteList>();
   U32 persistent = 0;
   for (U32 i = 0; i < bits; ++i) {
      auto const text = this->prefixText(i);
      Routing::RouteKey key{{}, TypeParam::Prefix::parse(text), preference};
      this->box_.routeIs(text.c_str(), TypeParam::RouteType::staticConfig, this->box_.fecIdOf(1), preference);
      bool const isConfigured = (i & 1U) != 0;
      bool const isMarked = (i & 2U) != 0;
      bool const isDynamic = (i & 4U) != 0;
      // Another preference is another route.
      key.preference = (i & 8U) != 0 ? preference : preference + 1;
      if (isConfigured) {
         configured->routeIs(key, Routing::RouteType::forward)->nonPersistentIs(isMarked);
      }
      if (isDynamic) {
         dynamic->routeIs(key, Routing::RouteType::forward);
      }
      bool const isKnown = key.preference == preference;
      persistent += isKnown && isConfigured ? (isMarked ? 0U : 1U) : (isKnown && isDynamic ? 0U : 1U);
   }
   auto summary = this->summary();
   summary.routeList = configured;
   summary.routeListDynamic = dynamic;
   summary.loadInternalStructures();
   EXPECT_EQ(
       categoriesOf(summary),
       (Categories{{"static", bits}, {"staticPersistent", persistent}, {"staticNonPersistent", bits - persistent}}));

   auto oneList = this->summary();
   oneList.routeListDynamic = dynamic;
   oneList.loadInternalStructures();
   EXPECT_EQ(categoriesOf(oneList),
             (Categories{{"static", bits}, {"staticPersistent", 12}, {"staticNonPersistent", 4}}));
   EXPECT_EQ(categoriesOf(this->loaded()), (Categories{{"static", bits}}));
}

TYPED_TEST(Summaries, AddWhatIsLoadedAgain) {
   this->box_.routeIs(TypeParam::nested[1], TypeParam::RouteType::iBgp);
   auto summary = this->loaded();
   summary.loadInternalStructures();
   EXPECT_EQ(categoriesOf(summary), (Categories{{"bgpInternal", 2}, {"bgpTotal", 2}}));
   EXPECT_EQ(summary.totalNumRoutes, 2);
   EXPECT_EQ(summary.routeCountByMask.begin()->value, 2U);
}

TYPED_TEST(Summaries, CountAttachedHostsOfTheirVrf) {
   struct Host {
      char const* interface;
      U32 vrfId;
      bool active;
      std::string vrfs;  // that it counts in
   };
   auto const hosts = std::to_array<Host>({{"Ethernet1", 0, true, "default"},
                                           {"Ethernet2", 0, false, ""},
                                           {"Management1", 0, true, ""},
                                           {"Ethernet3", 7, true, "red"},
                                           {"Ethernet4", 8, true, ""},
                                           {"Ethernet5", 9, true, "default9"}});
   this->box_.vrfs->vrfNameIs(7, "red");
   this->box_.vrfs->vrfNameIs(9, "default9");
   auto const attached = Zam::makePtr<Routing::AttachedRouteStatus>();
   for (auto const& host : hosts) {
      attached->routeIs({{}, Lumen::IntfId::named(host.interface), Lumen::IpGenAddr::parse(TypeParam::hop)},
                        {{}, host.vrfId, host.active});
   }
   for (char const* const vrf : {"default", "red", "default9", "blue"}) {
      auto summary = this->summary();
      summary.vrfName = vrf;
      summary.attachedRtStatus = attached;
      summary.loadAttachedRoutes();
      auto const expected = static_cast<U32>(std::ranges::count(hosts, vrf, &Host::vrfs));
      EXPECT_EQ(summary.totalNumRoutes, static_cast<S32>(expected)) << vrf;
      EXPECT_EQ(categoriesOf(summary), (expected != 0 ? Categories{{"attached", expected}} : Categories())) << vrf;
      if (expected != 0) {
         EXPECT_EQ(summary.routeCountByMask.begin()->key, U32{TypeParam::Prefix::maxLength});
      }
   }
}

// Damage in the middle of the table ends the walk; what was counted before it counts.
TYPED_TEST(Summaries, KeepWhatWasCountedBeforeDamage) {
   constexpr U32 routes = 20;
   constexpr U32 damaged = 12;
   using Record =
       std::conditional_t<std::is_same_v<TypeParam, S4>, Vault::Records::RouteRecord4, Vault::Records::RouteRecord6>;
   this->box_.manyRoutesAre(routes);
   auto const& table = *this->box_.inputs.routingStatus;
   // A prefix that no writer leaves behind: its length is beyond any.
   auto const lengthAt = Vault::Testing::slotOffset<Record>(table.path(), damaged) +
                         offsetof(Vault::Slot<Record>, words) + offsetof(Record, key) +
                         offsetof(typename Record::Key, length);
   Vault::Testing::patch<U8>(table.path(), lengthAt, 200);
   std::string told;
   table.corruptionHookIs([&told](std::string_view message) { told = message; });
   auto const summary = this->loaded();
   EXPECT_EQ(summary.totalNumRoutes, static_cast<S32>(damaged));
   EXPECT_NE(told.find("impossible prefix"), std::string::npos) << told;
   EXPECT_EQ(table.corruptions(), 1U);
   // A second load walks again, and ends there again.
   auto again = summary;
   again.loadInternalStructures();
   EXPECT_EQ(again.totalNumRoutes, static_cast<S32>(2 * damaged));
}

// What the route table shows when asked for everything, and the types that it never shows, which are none of the user's
// routes.
TYPED_TEST(Summaries, AgreeWithTheRouteTable) {
   using Type = typename TypeParam::RouteType;
   Random random(5);
   std::map<std::string, U32> types;  // by prefix
   for (U32 i = 0; i < 400; ++i) {
      auto const type = random.below(TypeParam::largestType + 1U);
      if (char const* const words = TypeParam::categories[type]; words != nullptr && *words != '!') {
         auto const bits = std::bitset<64>(random.number() * 0x9e3779b97f4a7c15ULL).to_string();
         auto const prefix = prefixOf<typename TypeParam::Prefix>(bits.substr(0, 8 + random.below(20))).stringValue();
         this->box_.routeIs(prefix.c_str(), static_cast<Type>(type));
         types[prefix] = type;
      }
   }
   this->box_.inputs.showHidden = true;
   auto const document = this->box_.model();
   Categories expected;
   std::map<U32, U32> lengths;
   U32 shown = 0;
   for (auto const& [prefix, type] : types) {
      bool const isShown = document.find("routes")->find(prefix) != nullptr;
      EXPECT_TRUE(isShown || type == 0 || TypeParam::isReceive(Type(type)) || TypeParam::isLinkRoute(Type(type)))
          << type;
      addCategories(expected, TypeParam::categories[type]);
      ++lengths[static_cast<U32>(std::stoul(prefix.substr(prefix.find('/') + 1)))];
      shown += isShown ? 1 : 0;
   }
   EXPECT_EQ(document.find("routes")->members.size(), shown);
   auto const summary = this->loaded();
   EXPECT_EQ(categoriesOf(summary), expected);
   EXPECT_EQ(summary.totalNumRoutes, static_cast<S32>(types.size()));
   EXPECT_EQ(summary.routeCountByMask.size(), lengths.size());
   for (auto const& [length, count] : summary.routeCountByMask) {
      EXPECT_EQ(count, lengths[length]) << length;
   }
}

// Through the type runtime, as a scripting layer uses it.
TYPED_TEST(Summaries, AreWithinReachOfTheRuntime) {
   registerTypes();
   this->box_.routeIs(TypeParam::nested[2], TypeParam::RouteType::gribi);
   auto const& type = *Zam::TypeRegistry::instance().type(TypeParam::typeName);
   auto summary = type.construct();
   type.attributeIs(summary, "routingStatus", this->box_.inputs.routingStatus);
   type.call(summary, "loadInternalStructures");
   type.call(summary, "routeCountByTypeInc", std::vector<std::any>{std::string("gribi"), 4});
   EXPECT_EQ(std::any_cast<U32>(type.call(summary, "routeCountByType", std::vector<std::any>{std::string("gribi")})),
             5U);
   EXPECT_EQ(std::any_cast<S32>(type.attribute(summary, "totalNumRoutes")), 1);
   auto const text = type.toText(summary);
   EXPECT_TRUE(text.starts_with("Value('" + std::string(TypeParam::typeName) + "', ** {'routingConfig': ")) << text;
   EXPECT_TRUE(text.ends_with(
       "'vrfName': 'default', 'routeCountByType': None, 'routeCountByMask': None, 'totalNumRoutes': 1})"))
       << text;
   EXPECT_DEATH(Zam::strepToValue<typename TypeParam::Summary>(text), "No String constructor for");
}

// Routes of the route cache count as static where the FIB does not hold their prefix.
TEST(RouteCacheSummary, CountsWhatTheFibDoesNotHold) {
   Box<V4> box;
   box.routeIs("10.1.0.0/16", V4::RouteType::connected);
   box.vrfs->vrfNameIs(7, "red");
   auto const cache = Zam::makePtr<Routing::Rib::RouteConfig>();
   for (auto const& [prefix, vrfId] :
        {std::pair("10.1.0.0/16", 0U), std::pair("10.2.0.0/16", 0U), std::pair("10.3.0.0/24", 0U),
         std::pair("10.4.0.0/16", 7U), std::pair("2001:db8::/32", 0U), std::pair("10.5.0.0/16", 8U)}) {
      cache->routeIs({{}, Lumen::IpGenPrefix::parse(prefix), vrfId}, {});
   }
   auto const counted = [&](char const* vrf, bool withFib) {
      RouteSummary summary;
      summary.vrfName = vrf;
      summary.vrfIdMap = box.vrfs;
      summary.routeCacheConfig = cache;
      summary.routingStatus = withFib ? box.inputs.routingStatus : nullptr;
      summary.loadRouteCacheRoutes();
      EXPECT_EQ(
          categoriesOf(summary),
          (summary.totalNumRoutes == 0 ? Categories()
                                       : Categories{{"static", static_cast<U32>(summary.totalNumRoutes)},
                                                    {"staticPersistent", static_cast<U32>(summary.totalNumRoutes)}}));
      return summary.totalNumRoutes;
   };
   EXPECT_EQ(counted("default", true), 2);
   EXPECT_EQ(counted("default", false), 3);
   EXPECT_EQ(counted("red", true), 1);
   EXPECT_EQ(counted("blue", true), 0);
}

}  // namespace

}  // namespace Kiv::Testing
