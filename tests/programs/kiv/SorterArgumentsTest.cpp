#include "programs/kiv/SorterArguments.h"

#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"
#include "programs/kiv/CommandParser.h"
#include "programs/kiv/Commands.h"
#include "programs/kiv/RouteRequest.h"
#include "state/Snapshot.h"
#include "support/Testing.h"

namespace kiv {
namespace {

// The other arguments are seen in the program's outputs.
TEST(SorterArguments, HaveTheInterfaceSwitchInIpv6) {
   constexpr char const* box = R"({"interfaces": {"e1": {"vrf": "red"}}, "vrfs": {"red": {"id": 5}}})";
   Kiv::registerTypes();
   auto const& type = *Zam::TypeRegistry::instance().type("Kiv::Route6Sorter");
   auto inputs = state::mountPrivately(state::parseSnapshot("box.json", box));
   for (bool const ofInterface : {false, true}) {
      Options options;
      options.words = {"show", "ipv6", "route"};
      if (ofInterface) {
         options.words.insert(options.words.end(), {"interface", "e1"});
      }
      Request const request = parseCommand(commands(), options);
      auto const sorter = type.construct(sorterArguments(inputs, requestedVrfs(inputs, request).back(),
                                                         requestedRoutes<Lumen::Ip6Prefix>(inputs, request)));
      EXPECT_EQ(std::any_cast<bool>(type.attribute(sorter, "intfFilter")), ofInterface);
      auto const status = std::any_cast<Zam::Ptr<Interface::IntfStatus const>>(type.attribute(sorter, "intfStatus"));
      ASSERT_EQ(status != nullptr, ofInterface);
      EXPECT_TRUE(!status || (status->intfId().name() == "e1" && status->vrfId() == 5));
   }
}

}  // namespace
}  // namespace kiv
