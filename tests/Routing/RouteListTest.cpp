#include "Routing/RouteList.h"
#include "support/Testing.h"

using Lumen::IpGenPrefix;
using Routing::RouteKey;
using Routing::RouteType;

namespace {

RouteKey key(std::string_view prefix, Routing::RoutePreference preference = 1) {
   return {{}, IpGenPrefix::parse(prefix), preference};
}

// In ascending order. Several are alike in address bytes and length, and differ in family or preference alone.
std::vector<RouteKey> const keys = {key("0.0.0.0/0"),     key("0.0.0.0/0", 255), key("::/0"),
                                    key("10.0.0.0/8", 1), key("10.0.0.0/8", 2),  key("a00::/8", 1),
                                    key("10.0.0.0/9", 1), key("2001:db8::/32"),  key("255.255.255.255/32")};

TEST(RouteKey, OrdersByPrefixThenPreference) {
   auto shuffled = keys;
   std::ranges::reverse(shuffled);
   std::ranges::sort(shuffled);
   EXPECT_EQ(shuffled, keys);
   EXPECT_TRUE(std::ranges::adjacent_find(shuffled) == shuffled.end());
}

TEST(RouteList, TellsKeysOfBothFamiliesApart) {
   auto const list = Zam::makePtr<Routing::RouteList>();
   U32 tag = 0;
   for (auto const& each : keys) {
      list->routeIs(each, RouteType::forward)->tagIs(++tag);
   }
   EXPECT_EQ(list->route().size(), keys.size());
   list->routeDel(key("::/0"));
   tag = 0;
   for (auto const& each : keys) {
      auto const* const route = list->route(each);
      ++tag;
      ASSERT_EQ(route == nullptr, each == key("::/0")) << each;
      EXPECT_TRUE(route == nullptr || (route->key() == each && route->tag() == tag)) << each;
   }
   EXPECT_EQ(list->route(key("10.0.0.0/8", 3)), nullptr);
}

}  // namespace
