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

}  // namespace
