#include "Kiv/CliSupport.h"
#include "support/Testing.h"

namespace Kiv::Testing {
namespace {
TEST(StaticRoutesCliSaverTest, first) {
   auto const list = Zam::makePtr<Routing::RouteList>();
   auto const hw = Zam::makePtr<Routing::Hardware::Status>();
   auto const helper = ipRouteCliPluginHelperFactory(hw);
   EXPECT_TRUE(helper->manageRoute(list, "default", "10.0.0.0/8", 1, Routing::RouteType::forward, "", "Ethernet1", false, 0,
                       false, 0, "", false, "", false, 5, "", "192.0.2.1", "foo", true, "", {}, 7));
   StaticRoutesCliSaver saver;
   EXPECT_EQ(saver.save(list, false, "ip route ", {}).bytes(), "ip route 10.0.0.0/8 Ethernet1 192.0.2.1 track bfd tag 5 name foo metric 7\n");
   EXPECT_EQ(Zam::valueToStrep(saver), "Value('Kiv::StaticRoutesCliSaver', ** {'sortedRoute': None})");
   EXPECT_EQ(Zam::valueToStrep(ClearIntfRoutesAndViasHelper()), "");
   ClearIntfRoutesAndViasHelper().clearIntfRoutesAndViasHelper(list, "Ethernet1");
   EXPECT_TRUE(list->route().empty());
   registerTypes();
}
}
}
