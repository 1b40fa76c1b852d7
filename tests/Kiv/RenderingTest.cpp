#include "Kiv/output/RouteRendering.h"
#include "SorterTesting.h"

#include "cliprint/Interrupt.h"

#include <thread>

#include <fcntl.h>
#include <unistd.h>

// Route lines as a whole: that what is printed from a recording is what would be printed without, and what no output
// can show. How each kind of line looks stands in the golden outputs.
namespace Kiv::Testing {

namespace {

using Lumen::IntfId;
using Tunnel::TunnelType;
using Vault::Fib::FecId;
using Vault::Testing::Random;

template <class Family>
class RenderingTest : public ::testing::Test {
 public:
   using RouteType = typename Family::RouteType;

   RenderingTest() {
      box_.vrfs->vrfNameIs(8, "blue");
      box_.inputs.tunnelFib = tunnels_;
      box_.nexthopGroupIs("web", 5);
      box_.inputs.nexthopGroupDisplay = true;
   }

   static Vault::Fib::Via viaThrough(IntfId const& intfId) {
      Vault::Fib::Via via;
      via.intfId = intfId;
      return via;
   }
   Vault::Fib::Via someVia() {
      auto via = box_.via(random_.below(4) == 0 ? "" : Family::hop, random_.below(2) == 0 ? "Ethernet1" : "Vlan20");
      switch (random_.below(10)) {
         case 0:
            via.label = Lumen::MplsLabel(16 + random_.below(9));
            break;
         case 1:
            via = viaThrough(IntfId::fromFecId(box_.fecIdOf(1).value()));
            break;
         case 2:
            via.tunnelId = someTunnel(0);
            break;
         case 3:
            via = viaThrough(IntfId::fromNexthopGroup(4 + random_.below(2)));
            break;
         case 4:
            via.intfId = IntfId();
            break;
         case 5:
            via = viaThrough(IntfId::fromFecId(FecId::of(20, 1 + random_.below(2)).value()));
            break;
         default:
            break;
      }
      via.weight = static_cast<U16>(1 + random_.below(2));
      return via;
   }
   // Of all types, some without a name; an index stands for one tunnel. Some of them are not set up.
   Tunnel::TunnelId someTunnel(U32 from) {
      U32 const index = from + random_.below(tunnelTypes.size() - from);
      return Tunnel::tunnelIdOf(static_cast<TunnelType>(tunnelTypes[index]), index + 1);
   }
   std::vector<Tunnel::TunnelFib::Via> someWays(U32 above, U32 count) {
      std::vector<Tunnel::TunnelFib::Via> ways(count);
      for (auto& way : ways) {
         way.intfId = std::array{IntfId::named("Ethernet7"), IntfId::fromNexthopGroup(5), IntfId::fromNexthopGroup(6),
                                 IntfId::fromFecId(box_.fecIdOf(1).value()),
                                 IntfId::fromTunnelId(someTunnel(above))}[random_.below(5)];
         way.hop = random_.below(2) == 0 ? Lumen::IpGenAddr() : Lumen::IpGenAddr::parse(Family::hop);
         way.weight = 1 + random_.below(2);
      }
      return ways;
   }
   // Each over ones behind it, policies that lead into them, and classes of a FEC that policies carry.
   void tunnelsAre() {
      auto const policies = Zam::makePtr<SrTePolicy::PolicyStatus>();
      for (U32 i = 0; i < tunnelTypes.size(); ++i) {
         auto const id = Tunnel::tunnelIdOf(static_cast<TunnelType>(tunnelTypes[i]), i + 1);
         if (tunnelTypes[i] == 7 && i % 2 == 0) {
            policies->policyIs({{}, Lumen::IpGenAddr::parse("10.255.0.1"), i}, id);
         }
         if (i + 2 < tunnelTypes.size()) {
            tunnels_->entryIs(id, {.vias = someWays(i + 1, 3), .backupVias = someWays(i + 1, i % 3)});
         }
      }
      auto const path = dir_ / ("policies" + std::to_string(random_.number()));
      Vault::Fib::ForwardingStatusWriter writer(path, {.capacity = 64, .arenaCapacity = 256});
      auto const classes = Zam::makePtr<SrTePolicy::CbfFecOverrideMap>();
      for (U64 const fec : {1U, 2U, 3U}) {
         auto straight = box_.via(Family::hop, "Ethernet9");
         std::vector<Vault::Fib::Via> vias{straight, viaThrough(IntfId::fromNexthopGroup(6)),
                                           viaThrough(IntfId::fromFecId(box_.fecIdOf(1).value()))};
         for (U32 i = 0; i < 4; ++i) {
            vias.emplace_back().tunnelId = someTunnel(0);
         }
         writer.fecIs({FecId::of(20, fec), 0, vias});
      }
      classes->fecOverrideIs(FecId::of(20, 1).value(), {{{}, {46}, FecId::of(20, 3).value()}});
      classes->fecOverrideIs(box_.fecIdOf(2).value(), {{{}, {10, 12}, FecId::of(20, 3).value()}});
      box_.inputs.policyStatus = policies;
      box_.inputs.policyForwardingStatus = Zam::makePtr<Vault::Fib::ForwardingStatus>(path);
      box_.inputs.cbfFecOverrideMap = classes;
   }
   // Few FECs for many routes, which repeat them in any order.
   void manyRoutesAre(bool ofAllTypes = false) {
      tunnelsAre();
      box_.fecIs(1, {box_.via(Family::hop, "Ethernet9"), box_.via("", "Ethernet9")});
      for (U32 id = 2; id < 30; ++id) {
         std::vector<Vault::Fib::Via> vias;
         std::generate_n(std::back_inserter(vias), random_.below(5), [this] { return someVia(); });
         box_.fecIs(id, vias, static_cast<U16>(random_.below(3)));
      }
      for (U32 i = 0; i < 200; ++i) {
         auto const address = Lumen::Ip6Addr(0x20010db800000000U | i << 16U, 0);
         auto const text = Family::viasShareRouteLine
                               ? "10." + std::to_string(i) + ".0.0/" + std::to_string(16 + random_.below(17))
                               : address.stringValue() + "/" + std::to_string(48 + random_.below(81));
         auto type = std::array{Family::ospf, RouteType::eBgp, RouteType::nexthopGroup}[random_.below(3)];
         if (ofAllTypes && random_.below(2) == 0) {
            type = static_cast<RouteType>(random_.below(Family::viasShareRouteLine ? 43 : 30));
         }
         auto const fecId = random_.below(10) == 0 ? FecId::of(20, 1) : box_.fecIdOf(2 + random_.below(28));
         box_.routeIs(text.c_str(), type, fecId, static_cast<U8>(random_.below(256)),
                      random_.below(2) == 0 ? random_.below(10) : random_.number(),
                      random_.below(4) == 0 ? U32{8} : Vrf::VrfIdMap::noVrf);
         if (random_.below(8) == 0) {
            box_.hardwareUnprogrammedIs(text.c_str());
         }
         if (random_.below(8) == 0) {
            box_.kernelUnprogrammedIs(text.c_str());
         }
      }
   }

   template <class Print>
   static std::string printed(U32 format, Print const& print) {
      testing_cliprint::CapturedFile file;
      {
         cliprint::CliPrintBuffer buffer(file.fd());
         cliprint::RendererV2 renderer(format, buffer, true);
         print(renderer);
         renderer.endDocument();
         renderer.ioflush();
      }
      return file.text();
   }
   std::string printed(U32 format, typename Family::Sorter const& sorter, typename Family::Route const& route) const {
      return printed(format, [&](auto& renderer) { Rendering(sorter, renderer).routes.printRoute(route); });
   }
   struct Rendering {
      Rendering(typename Family::Sorter const& sorter, cliprint::RendererV2& renderer)
          : display(sorter.fecs().storePtr()),
            programmed(sorter.inputs().unprogrammedRouteStatus.get(), sorter.inputs().kernelUnprogrammedRoute.get(),
                       sorter.inputs().vrfId),
            routes({display, programmed, sorter.inputs().vrfId, sorter.inputs().nexthopGroupDisplay}, renderer) {}
      FecDisplay display;
      ProgrammedState programmed;
      RouteRendering<typename Family::Base> routes;
   };

   static constexpr auto tunnelTypes = std::to_array<U32>({7, 1, 2, 7, 12, 11, 7, 3, 0, 4, 13, 7, 6, 2});

   testsupport::TempDir dir_;
   Random random_{1};
   Box<Family> box_;
   Zam::Ptr<Tunnel::TunnelFib::TunnelFib> const tunnels_ = Zam::makePtr<Tunnel::TunnelFib::TunnelFib>();
};
TYPED_TEST_SUITE(RenderingTest, Families);

// In the whole table, where FECs repeat, as when it is asked for alone.
TYPED_TEST(RenderingTest, everyRoutePrintsAsItDoesAlone) {
   auto& box = this->box_;
   box.inputs.showHidden = true;
   for (int world = 0; world < 4; ++world) {
      this->manyRoutesAre(true);
      box.inputs.prefix = {};
      auto const model = box.model();
      auto const text = box.textAfterLegend();
      auto const& routes = model.find("routes")->members;
      ASSERT_GT(routes.size(), 100U);
      std::string lines;
      for (auto const& [prefix, route] : routes) {
         box.inputs.prefix = box.prefix(prefix.c_str());
         auto const alone = box.textAfterLegend();
         lines.append(alone, 0, alone.size() - 1);  // the blank line that ends a table
         ASSERT_EQ(box.model().find("routes")->members.at(0).value.text, route.text) << prefix;
      }
      ASSERT_EQ("Gateway of last resort is not set\n\n" + lines + '\n', text);
   }
}

// What stands behind the prefix, and at the end of the model; nothing when the route is not shown.
TYPED_TEST(RenderingTest, routesWithoutAWay) {
   constexpr bool is4 = TypeParam::viasShareRouteLine;
   auto& box = this->box_;
   box.inputs.showHidden = true;
   box.vrfs->vrfNameIs(9, "multiple source VRFs");
   auto const hop = std::string(" via ") + TypeParam::hop + ", Ethernet1";
   std::string const behind = is4 ? "" : " [110/20]\n          ";
   std::string const internal =
       is4 ? " is directly connected, <Internal>" : behind + " via <Internal>, directly connected";
   std::string const several =
       is4 ? " [110/20] (multiple source VRFs)" : " [110/20] (multiple source VRFs)\n          ";
   auto const zero = typename TypeParam::Addr().stringValue();
   constexpr U32 own = Vrf::VrfIdMap::noVrf;
   struct Case {
      typename TypeParam::RouteType type;
      std::vector<Vault::Fib::Via> vias;
      U32 srcVrfId;
      std::string text;
      std::string model;
   };
   for (auto const& [type, vias, srcVrfId, expected, model] : std::initializer_list<Case>{
            {TypeParam::ospf, {box.via("", "")}, own, internal, R"("vias":[],"directlyConnected":true})"},
            {TypeParam::ospf, {box.via(zero.c_str(), "")}, own, internal, R"("vias":[],"directlyConnected":true})"},
            {TypeParam::ospf,
             {box.via(TypeParam::hop, "Ethernet1")},
             9,
             several + hop,
             R"("directlyConnected":false})"},
            {TypeParam::ospf,
             {box.via("", "Ethernet1")},
             9,
             is4 ? " is directly connected (multiple source VRFs), Ethernet1"
                 : several + " via Ethernet1, directly connected",
             R"("directlyConnected":true})"},
            {TypeParam::RouteType::nexthopGroup, {this->viaThrough(IntfId::fromNexthopGroup(0))}, own, "", ""},
            {TypeParam::RouteType::nexthopGroup, {}, own, "", ""},
        }) {
      box.routeIs(TypeParam::nested[0], type, box.fecIs(1, vias), 110, 20, srcVrfId);
      auto const text = box.textAfterLegend();
      auto const at = text.find(TypeParam::nested[0]);
      EXPECT_EQ(at == std::string::npos ? "" : text.substr(at),
                expected.empty() ? "" : TypeParam::nested[0] + expected + "\n\n");
      auto const routes = box.model().find("routes")->members;
      EXPECT_TRUE(routes.empty() ? model.empty() : routes[0].value.text.ends_with(model)) << box.output(2);
   }
}

// Taken back from the text: flags, preference, metric, and what the vias say of next hops, interfaces and labels.
TYPED_TEST(RenderingTest, textAndModelSayTheSame) {
   this->manyRoutesAre();
   auto const model = this->box_.model();
   auto const& routes = model.find("routes")->members;
   auto const text = this->box_.textAfterLegend();
   ASSERT_GT(routes.size(), 100U);
   for (auto const& [prefix, route] : routes) {
      auto const at = text.find(' ' + prefix + ' ');
      ASSERT_NE(at, std::string::npos) << prefix;
      auto const begin = text.rfind('\n', at) + 1;
      auto const flags = text.substr(begin, at - begin);
      EXPECT_EQ(flags[0] == '*', route.find("hardwareProgrammed")->text == "false") << prefix;
      EXPECT_EQ(flags.find('%') != std::string::npos, route.find("kernelProgrammed")->text == "false") << prefix;
      EXPECT_EQ(flags.find(" L") != std::string::npos, route.find("routeLeaked")->text == "true") << prefix;
      // To the next line that begins with a prefix.
      auto end = text.find('\n', at);
      while (end + 9 < text.size() && text.compare(end + 1, 9, "         ") == 0) {
         end = text.find('\n', end + 1);
      }
      auto lines = text.substr(at, end - at);
      auto const take = [&](std::string const& piece) {
         auto const found = lines.find(piece);
         EXPECT_NE(found, std::string::npos) << piece << " in " << lines;
         if (found != std::string::npos) {
            lines.erase(found, piece.size());
         }
      };
      if (auto const* const metric = route.find("metric"); metric != nullptr) {
         take(" [" + route.find("preference")->text + '/' + metric->text + ']');
      }
      std::function<void(testsupport::JsonValue const&)> const takeAll = [&](auto const& within) {
         for (auto const& [key, value] : within.members) {
            if (key == "viaWeight") {
               take(", weight " + value.text);
            } else if (std::ranges::count(std::array{"nexthopAddr", "interface", "endpoint", "nexthopGroupName"},
                                          key)) {
               take(value.text);
            }
            takeAll(value);
         }
      };
      takeAll(route);
      EXPECT_EQ(lines.find(TypeParam::hop), std::string::npos) << "not in the model: " << lines;
      for (char const* const each : {"Vlan", "Ethernet", "weight", "endpoint 1", "Nexthop Group web"}) {
         EXPECT_EQ(lines.find(each), std::string::npos) << "not in the model: " << lines;
      }
   }
}

// A tunnel shows all of its ways, with their weights, wherever something leads into it.
TYPED_TEST(RenderingTest, aTunnelShowsItsWaysWhereverItShows) {
   this->manyRoutesAre();
   std::map<std::string, std::pair<U32, std::string>> known;  // by index
   std::function<std::string(testsupport::JsonValue const&)> const dump = [&](auto const& value) {
      auto text = value.text + '{';
      for (auto const& [key, member] : value.members) {
         text += key + ':' + dump(member) + ',';
      }
      return text + '}';
   };
   std::function<void(testsupport::JsonValue const&)> const judge = [&](auto const& value) {
      auto const* const index = value.find("tunnelIndex");
      auto const* const named = value.find("tunnel") != nullptr ? value.find("tunnel") : value.find("srTePolicy");
      auto const* const own = named != nullptr ? named->find("tunnelIndex") : index;
      bool const isName = own == index && value.find("vias") == nullptr;
      if (own != nullptr && !isName && !(named != nullptr && named->find("vias") != nullptr)) {
         U32 const at = static_cast<U32>(std::stoul(own->text)) - 1;
         auto const* const entry =
             this->tunnels_->entry(Tunnel::tunnelIdOf(static_cast<TunnelType>(this->tunnelTypes[at]), at + 1));
         auto const* const vias = value.find("vias");
         ASSERT_NE(vias, nullptr);
         auto const* const backups = value.find("tunViaBackupVias");
         EXPECT_EQ(vias->members.size(), entry != nullptr ? entry->vias.size() : 0);
         EXPECT_EQ(backups != nullptr ? backups->members.size() : 0, entry != nullptr ? entry->backupVias.size() : 0);
         bool const isWeighted =
             entry != nullptr && std::ranges::any_of(entry->vias, [](auto const& via) { return via.weight != 1; });
         for (auto const& [key, way] : vias->members) {
            EXPECT_EQ(way.find("viaWeight") != nullptr, isWeighted);
         }
         auto const ways = dump(*vias) + (backups != nullptr ? dump(*backups) : "");
         auto& [times, first] = known[own->text];
         first = times++ == 0 ? ways : first;
         EXPECT_EQ(ways, first) << own->text;
      }
      for (auto const& [key, member] : value.members) {
         judge(member);
      }
   };
   judge(this->box_.model());
   EXPECT_GT(known.size(), 8U);
   EXPECT_TRUE(std::ranges::all_of(known, [](auto const& each) { return each.second.first > 2; }));
}

TYPED_TEST(RenderingTest, noIdOfTheInsideIsShown) {
   this->manyRoutesAre();
   for (bool const hosts : {false, true}) {
      this->box_.inputs.hostRoutes = hosts;
      for (U32 const format : {1U, 2U}) {
         auto const output = this->box_.output(format);
         for (char const* const id : {"FecId(", "NexthopGroup(", "DynamicTunnel(", "unknown tunnel", " on \n"}) {
            EXPECT_EQ(output.find(id), std::string::npos) << id;
         }
      }
   }
}

// FECs and tunnels, each leading into the next.
TYPED_TEST(RenderingTest, nestingEndsAtSixteenLevels) {
   auto& box = this->box_;
   auto const tunnelOf = [](U32 level) { return Tunnel::tunnelIdOf(TunnelType::isisSr, level); };
   for (U32 const levels : {15U, 16U, 17U, 18U}) {
      for (U32 level = 0; level < levels; ++level) {
         bool const last = level + 1 == levels;
         auto const next = last ? IntfId::named("Deepest") : IntfId::fromFecId(box.fecIdOf(level + 3).value());
         box.fecIs(level + 2, {this->viaThrough(next)});
         auto const further = last ? IntfId::named("Deepest") : IntfId::fromTunnelId(tunnelOf(level + 1));
         this->tunnels_->entryIs(tunnelOf(level),
                                 {.vias = {{{}, further, Lumen::IpGenAddr::parse(TypeParam::hop), 0, 1}}});
      }
      box.routeIs(TypeParam::nested[0], TypeParam::ospf, box.fecIdOf(2));
      EXPECT_EQ(box.text().find("Deepest") != std::string::npos, levels <= 16) << levels << " FECs";
      auto into = box.via("", "");
      into.tunnelId = tunnelOf(0);
      box.routeIs(TypeParam::nested[0], TypeParam::ospf, box.fecIs(1, {into}));
      EXPECT_EQ(box.text().find("Deepest") != std::string::npos, levels <= 17) << levels << " tunnels";
   }
}

TYPED_TEST(RenderingTest, aFecThatHasVanishedIsNamed) {
   auto const sorter = this->box_.sorter();
   auto const missing = this->box_.routeIs(TypeParam::nested[0], TypeParam::ospf, this->box_.fecIdOf(99));
   auto const told = "<FecId " + std::to_string(missing.fecId.value()) + " not found>";
   EXPECT_NE(this->printed(1, *sorter, missing).find(" via " + told + '\n'), std::string::npos);
   EXPECT_NE(
       this->printed(2, *sorter, missing)
           .find(R"("forward","directlyConnected":false,"preference":110,"metric":20,"vias":[{"nexthopAddr":")" + told),
       std::string::npos);
}

// A shared gateway is a neighbour on every interface, on more of them than a FEC of the tables has vias.
TYPED_TEST(RenderingTest, aNeighbourMayBeOnManyInterfaces) {
   auto& box = this->box_;
   auto const neighbours = Zam::makePtr<Routing::AttachedRouteStatus>();
   Lumen::IpGenAddr const address(box.prefix(TypeParam::inNested).address());
   for (U32 i = 0; i < 700; ++i) {
      neighbours->routeIs({{}, IntfId::named("Vlan" + std::to_string(i)), address}, {{}, box.vrfId, true});
   }
   box.inputs.attachedRouteStatus = neighbours;
   box.inputs.hostRoutes = true;
   EXPECT_EQ(box.model().find("routes")->members.front().value.find("vias")->members.size(), 700U);
}

TYPED_TEST(RenderingTest, anOutputThatFailedLeavesNothingBehind) {
   this->manyRoutesAre();
   auto const sorter = this->box_.sorter();
   auto const expected = this->box_.output(1);
   EXPECT_FALSE(sorter->printRoutes(~U32{0}, 1, false));
   EXPECT_NE(sorter->outputError(), 0);
   testing_cliprint::CapturedFile file;
   EXPECT_TRUE(sorter->printRoutes(static_cast<U32>(file.fd()), 1, false));
   EXPECT_EQ(file.text(), expected);
}

// As the route cache makes them: the link, and tunnel ends beside it.
TYPED_TEST(RenderingTest, vxlanViasBesideAConnectedOne) {
   auto const sorter = this->box_.sorter();
   auto const fec = cachedFecFactory(Vault::Fib::FecId::of(4, 1));
   CachedVia link;
   link.intfId = IntfId::named("Vlan1");
   fec->viaIs(link, true);
   fec->viaEvpnEntryIs({{{}, Lumen::IpGenAddr::parse("192.0.2.7"), Lumen::Vni(5), {}, {}}});
   sorter->fecIs(fec);
   auto const route = this->box_.routeIs(TypeParam::nested[0], TypeParam::ospf, fec->fecId());
   auto const text = this->printed(1, *sorter, route);
   EXPECT_NE(text.find("Vlan1"), std::string::npos);
   EXPECT_NE(text.find("via VTEP 192.0.2.7 VNI 5"), std::string::npos) << text;
}

// A user who interrupts behind any piece of the output sees it end there.
TYPED_TEST(RenderingTest, anInterruptAtAnyFlushEndsTheOutput) {
   this->box_.manyRoutesAre(2000);
   auto const whole = this->box_.output(2);
   for (std::size_t pieces = 0; pieces < whole.size() / cliprint::globalBufsize; ++pieces) {
      int ends[2];
      ASSERT_EQ(::pipe(ends), 0);
      ::fcntl(ends[1], F_SETPIPE_SZ, 4096);
      std::string seen;
      bool interrupts = false;
      std::jthread reader([&, from = ends[0]] {
         std::array<char, 4096> block;
         for (ssize_t size = 0; (size = ::read(from, block.data(), block.size())) > 0;) {
            seen.append(block.data(), static_cast<std::size_t>(size));
            if (!interrupts && seen.size() > pieces * cliprint::globalBufsize) {
               interrupts = true;
               cliprint::interruptedIs(true);
            }
         }
      });
      ::testing::internal::CaptureStdout();
      EXPECT_FALSE(this->box_.sorter()->printRoutes(static_cast<U32>(ends[1]), 2, false));
      EXPECT_TRUE(::testing::internal::GetCapturedStdout().starts_with("exiting "));
      ::close(ends[1]);
      reader.join();
      ::close(ends[0]);
      EXPECT_TRUE(whole.starts_with(seen) && seen.size() < whole.size()) << pieces;
   }
}

}  // namespace

}  // namespace Kiv::Testing
