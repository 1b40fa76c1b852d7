#include "Interface/Management.h"
#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"
#include "tests/Kiv/SelectionOracle.h"
#include "tests/Vault/VaultTesting.h"
#include "tests/support/Cases.h"

// Routes counted by category and mask length, against what the words of the route table say, against lists written
// down beside it, and against the plain loops of the oracle.
namespace Kiv::Testing {

namespace {

using Categories = std::map<std::string, U32>;

struct S4 : V4 {
   using Summary = RouteSummary;
   using Record = Vault::Records::RouteRecord4;
   static constexpr char const* name = "IPv4";
   static constexpr char const* typeName = "Kiv::RouteSummary";
   static std::string prefixText(U32 number) { return "10." + std::to_string(number) + ".0.0/16"; }
};

struct S6 : V6 {
   using Summary = Route6Summary;
   using Record = Vault::Records::RouteRecord6;
   static constexpr char const* name = "IPv6";
   static constexpr char const* typeName = "Kiv::Route6Summary";
   static std::string prefixText(U32 number) { return "2001:db8:" + std::to_string(number) + "::/48"; }
};

// By type; those that are not in the list count under none.
template <class Family>
std::map<U32, std::string> listedCategories() {
   std::map<U32, std::string> byType;
   for (auto const& [type, words] : testsupport::casesOf("Kiv/summary/categories.txt", Family::name)) {
      byType[static_cast<U32>(std::stoul(type))] = words;
   }
   return byType;
}

// Of a route, by words that are separated by blanks; no word is a category too.
void addCategories(Categories& counts, std::string const& words) {
   std::istringstream in(words);
   std::string word;
   do {
      in >> word;
      ++counts[word];
   } while (!in.eof());
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
   Box<Family> box_;
   std::map<U32, std::string> const listed_ = listedCategories<Family>();
};

using SummaryFamilies = ::testing::Types<S4, S6>;
TYPED_TEST_SUITE(Summaries, SummaryFamilies);

TYPED_TEST(Summaries, CountEveryTypeUnderItsCategories) {
   using Type = typename TypeParam::RouteType;
   Categories expected;
   for (U32 type = 0; type < 256; ++type) {
      if (static_cast<Type>(type) != Type::staticOpalSdk) {
         this->box_.routeIs(TypeParam::prefixText(type).c_str(), static_cast<Type>(type));
      }
   }
   for (auto const& [type, words] : this->listed_) {
      addCategories(expected, words);
   }
   auto const summary = this->loaded();
   EXPECT_EQ(categoriesOf(summary), expected);
   // Up to the last of the list a route counts, whether it has categories or not.
   U32 const total = this->listed_.rbegin()->first;  // they begin at 0, and one is not there
   EXPECT_EQ(summary.totalNumRoutes, static_cast<S32>(total));
   ASSERT_EQ(summary.routeCountByMask.size(), 1U);
   EXPECT_EQ(summary.routeCountByMask.begin()->value, total);

   this->box_.routeIs(TypeParam::nested[0], Type::staticOpalSdk);
   EXPECT_DEATH(this->loaded(), std::string("routeType staticOpalSdk can not be present in FIB vault.*void ") +
                                    TypeParam::typeName + "::loadInternalStructures\\(\\)");
}

TYPED_TEST(Summaries, OfNothingHoldNothing) {
   for (auto const& nothing : {typename TestFixture::Summary(), this->summary()}) {
      auto summary = nothing;
      summary.loadInternalStructures();
      summary.loadAttachedRoutes();
      if constexpr (requires { summary.loadRouteCacheRoutes(); }) {
         summary.loadRouteCacheRoutes();
      }
      EXPECT_EQ(summary, nothing);
   }
}

// A static route lasts unless its configuration says otherwise, or only the list of those added at run time has it.
TYPED_TEST(Summaries, TellStaticRoutesApart) {
   constexpr U32 bits = 16;
   constexpr U8 preference = 5;
   auto const configured = Zam::makePtr<Routing::RouteList>();
   auto const dynamic = Zam::makePtr<Routing::RouteList>();
   U32 persistent = 0;
   for (U32 i = 0; i < bits; ++i) {
      auto const text = TypeParam::prefixText(i);
      Routing::RouteKey key{{}, TypeParam::Prefix::parse(text), preference};
      this->box_.routeIs(text.c_str(), TypeParam::RouteType::staticConfig, this->box_.fecIdOf(1), preference);
      auto const [isConfigured, isMarked, isDynamic] = std::array{(i & 1U) != 0, (i & 2U) != 0, (i & 4U) != 0};
      bool const isKnown = (i & 8U) != 0;
      key.preference = isKnown ? preference : preference + 1;  // another preference is another route
      if (isConfigured) {
         configured->routeIs(key, Routing::RouteType::forward)->nonPersistentIs(isMarked);
      }
      if (isDynamic) {
         dynamic->routeIs(key, Routing::RouteType::forward);
      }
      persistent += !isKnown || (isConfigured ? !isMarked : !isDynamic) ? 1U : 0U;
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
   using Record = typename TypeParam::Record;
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
   EXPECT_NE(told.find("damaged route"), std::string::npos) << told;
   EXPECT_EQ(table.corruptions(), 1U);
   // A second load walks again, ends there again, and adds.
   auto again = summary;
   again.loadInternalStructures();
   EXPECT_EQ(again.totalNumRoutes, static_cast<S32>(2 * damaged));
   EXPECT_EQ(categoriesOf(again)["ospfTotal"], 2 * damaged);
   EXPECT_EQ(again.routeCountByMask.begin()->value, 2 * damaged);
}

// What the route table shows when asked for everything, and the types that it never shows, which are none of the user's
// routes.
TYPED_TEST(Summaries, AgreeWithTheRouteTable) {
   using Type = typename TypeParam::RouteType;
   Random random(5);
   std::map<std::string, U32> types;  // by prefix
   for (U32 i = 0; i < 400; ++i) {
      auto const type = random.below(this->listed_.rbegin()->first + 1);
      if (this->listed_.contains(type)) {
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
      addCategories(expected, this->listed_.at(type));
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
   EXPECT_TRUE(text.starts_with("Value('" + std::string(TypeParam::typeName) + "', ** {'routingConfig': ") &&
               text.ends_with(
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
      auto const total = static_cast<U32>(summary.totalNumRoutes);
      EXPECT_EQ(categoriesOf(summary),
                (total == 0 ? Categories() : Categories{{"static", total}, {"staticPersistent", total}}));
      return total;
   };
   EXPECT_EQ(counted("default", true), 2U);
   EXPECT_EQ(counted("default", false), 3U);
   EXPECT_EQ(counted("red", true), 1U);
   EXPECT_EQ(counted("blue", true), 0U);
}

}  // namespace

}  // namespace Kiv::Testing
