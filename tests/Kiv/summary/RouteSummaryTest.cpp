#include "Interface/Management.h"
#include "Kiv/CliSupport.h"
#include "tests/Kiv/SelectionOracle.h"
#include "tests/Vault/VaultTesting.h"

// Routes counted by category and mask length, against what the route table shows. The categories of each type stand in
// the golden summaries of the examples.
namespace Kiv::Testing {

namespace {

using Categories = std::map<std::string, U32>;

struct S4 : V4 {
   using Summary = RouteSummary;
   using Record = Vault::Records::RouteRecord4;
   static constexpr char const* typeName = "Kiv::RouteSummary";
   static constexpr U8 types = 45;
   static std::string prefixText(U32 number) { return "10." + std::to_string(number) + ".0.0/16"; }
};

struct S6 : V6 {
   using Summary = Route6Summary;
   using Record = Vault::Records::RouteRecord6;
   static constexpr char const* typeName = "Kiv::Route6Summary";
   static constexpr U8 types = 32;
   static std::string prefixText(U32 number) { return "2001:db8:" + std::to_string(number) + "::/48"; }
};

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
};

using SummaryFamilies = ::testing::Types<S4, S6>;
TYPED_TEST_SUITE(Summaries, SummaryFamilies);

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

// Whatever the route table shows counts, and nothing that only damage makes. Each route counts under one category, and
// some in a total besides.
TYPED_TEST(Summaries, AgreeWithTheRouteTable) {
   using Type = typename TypeParam::RouteType;
   Random random(5);
   std::map<std::string, Type> types;  // by prefix
   for (U32 i = 0; i < 400; ++i) {
      auto const type = static_cast<Type>(random.below(256));
      auto const bits = std::bitset<64>(random.number() * 0x9e3779b97f4a7c15ULL).to_string();
      auto const prefix = prefixOf<typename TypeParam::Prefix>(bits.substr(0, 8 + random.below(20))).stringValue();
      if (type != Type::staticOpalSdk) {
         this->box_.routeIs(prefix.c_str(), type);
         types[prefix] = type;
      }
   }
   this->box_.inputs.showHidden = true;
   auto const document = this->box_.model();
   std::map<U32, U32> lengths;
   U32 shown = 0;
   U32 counted = 0;
   for (auto const& [prefix, type] : types) {
      bool const isShown = document.find("routes")->find(prefix) != nullptr;
      bool const isCounted = U8(type) < TypeParam::types;
      EXPECT_TRUE(isCounted || !isShown) << U32(U8(type));
      counted += isCounted ? 1 : 0;
      lengths[static_cast<U32>(std::stoul(prefix.substr(prefix.find('/') + 1)))] += isCounted ? 1 : 0;
      shown += isShown ? 1 : 0;
   }
   std::erase_if(lengths, [](auto const& length) { return length.second == 0; });
   EXPECT_TRUE(shown > 20 && document.find("routes")->members.size() == shown);
   auto const summary = this->loaded();
   EXPECT_EQ(summary.totalNumRoutes, static_cast<S32>(counted));
   U32 inCategories = 0;
   for (auto const& [category, count] : categoriesOf(summary)) {
      inCategories += category.ends_with("Total") ? 0 : count;
   }
   EXPECT_LE(inCategories, counted);
   std::map<U32, U32> byMask;
   for (auto const& [length, count] : summary.routeCountByMask) {
      byMask[length] = count;
   }
   EXPECT_EQ(byMask, lengths);
   this->box_.routeIs(TypeParam::nested[0], Type::staticOpalSdk);
   EXPECT_DEATH(this->loaded(), std::string("routeType staticOpalSdk can not be present in FIB vault.*void ") +
                                    TypeParam::typeName + "::loadInternalStructures\\(\\)");
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
