#include "ConfigTesting.h"
#include "Zam/FlatMap.h"
#include "Zam/TypeRegistry.h"

namespace Kiv::Testing {

namespace {

using Lumen::RouteDistinguisher;

using InputDir = RdAssignmentChecker::InputDir;

RouteDistinguisher rd(char const* text) {
   return RouteDistinguisher::parse(text);
}

TEST(RouteDistinguisherTest, textForms) {
   std::tuple<char const*, U64, char const*> const forms[] = {
       {"0:0", 0, "0:0"},
       {"65000:100", 0x0000'fde8'0000'0064, "65000:100"},
       {"65535:4294967295", 0x0000'ffff'ffff'ffff, "65535:4294967295"},
       {"1.2.3.4:5", 0x0001'0102'0304'0005, "1.2.3.4:5"},
       {"255.255.255.255:65535", 0x0001'ffff'ffff'ffff, "255.255.255.255:65535"},
       {"65536:1", 0x0002'0001'0000'0001, "65536:1"},
       {"4294967295:65535", 0x0002'ffff'ffff'ffff, "4294967295:65535"},
       {"1.0:1", 0x0002'0001'0000'0001, "65536:1"},
       {"0.65000:100", 0x0002'0000'fde8'0064, "0.65000:100"},
       {"0.0:0", 0x0002'0000'0000'0000, "0.0:0"},
   };
   std::set<RouteDistinguisher> all;
   for (auto const& [text, value, canonical] : forms) {
      EXPECT_EQ(rd(text).value(), value) << text;
      EXPECT_EQ(rd(text).stringValue(), canonical);
      EXPECT_EQ(Zam::strepToValue<RouteDistinguisher>(Zam::valueToStrep(rd(text))), rd(text));
      all.insert(rd(text));
   }
   EXPECT_EQ(all.size(), std::size(forms) - 1);
   for (char const* const text :
        {"",     ":",    "1",       "1:",      ":1",         "1:1:1",       "1:-1", "+1:1", " 1:1", "1:1 ",
         "01:1", "1:01", "1.2.3:1", "1.2.3.4", "1.2.3.04:1", "1.2.3.4.5:1", "1.:1", ".1:1", "a:1",  "0x1:1"}) {
      EXPECT_THROW(rd(text), Zam::ParseError) << text;
   }
   for (char const* const text : {"65535:4294967296", "4294967296:1", "65536:65536", "1.2.3.4:65536", "1.65536:1",
                                  "65536.1:1", "1:18446744073709551616", "99999999999999999999:1"}) {
      EXPECT_THROW(rd(text), Zam::RangeError) << text;
   }
}

Zam::Ptr<InputDir> dirOf(std::vector<std::pair<char const*, char const*>> const& assignments) {
   auto const dir = Zam::makePtr<InputDir>();
   for (auto const& [vrf, text] : assignments) {
      auto const input = Zam::makePtr<Ip::RouteDistinguisherInput>();
      input->routeDistinguisherIs(vrf, rd(text));
      input->routeDistinguisherIs("green", rd("7:7"));
      dir->entityIs("input" + std::to_string(dir->size()), input);
   }
   return dir;
}

TEST(RdAssignmentCheckerTest, table) {
   struct {
      std::vector<std::pair<char const*, char const*>> automatic;
      std::vector<std::pair<char const*, char const*>> configured;
      char const* holder;  // of the distinguisher that VRF red is to get; empty when there is none
   } const cases[] = {
       {{}, {}, ""},
       {{{"red", "1:1"}}, {{"red", "1:1"}}, ""},
       {{}, {{"blue", "1:1"}}, "blue"},
       {{{"blue", "1:1"}}, {}, "blue"},
       {{{"black", "1:1"}}, {{"blue", "1:1"}}, "blue"},
       {{{"black", "1:1"}}, {{"red", "1:1"}}, "black"},
       {{}, {{"red", "1:1"}, {"blue", "1:2"}, {"white", "1:1"}, {"black", "1:1"}}, "white"},
       {{{"Red", "1:1"}}, {}, "Red"},
       {{{"blue", "0.1:1"}}, {{"blue", "1:10"}}, ""},  // of another type, or another number
   };
   for (auto const& [automatic, configured, holder] : cases) {
      RdAssignmentChecker const checker(dirOf(automatic), dirOf(configured), "red", rd("1:1"));
      EXPECT_EQ(checker.acceptable, *holder == '\0') << holder;
      EXPECT_EQ(checker.errorMessage.bytes(),
                *holder == '\0' ? "" : std::string("RD 1:1 already in use by VRF ") + holder);
   }
   EXPECT_TRUE(RdAssignmentChecker(nullptr, nullptr, "red", rd("1:1")).acceptable);
}

TEST(RdAssignmentCheckerDeathTest, aForeignEntity) {
   auto const dir = dirOf({});
   dir->entityIs("foreign", Zam::makePtr<Ip::Config>());
   EXPECT_DEATH(RdAssignmentChecker(dir, nullptr, "red", rd("1:1")),
                "__null != routeDistinguisherInput, source Kiv/CliSupport");
}

TEST(ProtocolCodeWordTest, theFirstTypeWhoseWordBeginsIt) {
   std::pair<char const*, char const*> const cases[] = {{"connected", "C"},
                                                        {"static", "S"},
                                                        {"staticRoute", "S"},
                                                        {"vcs", "V"},
                                                        {"kernel", "K"},
                                                        {"RIP", "R"},
                                                        {"bgpAggregate", "A B"},
                                                        {"ospfSummary", "A O"},
                                                        {"OSPF", "O"},
                                                        {"OSPFv3", "O"},
                                                        {"ospfInterArea", "O IA"},
                                                        {"ospfExternalType1", "O E1"},
                                                        {"ospfExternalType2", "O E2"},
                                                        {"ospfNssaExternalType1", "O N1"},
                                                        {"ospfNssaExternalType2", "O N2"},
                                                        {"iBGP", "B I"},
                                                        {"eBGP", "B E"},
                                                        {"BGP", "B"},
                                                        {"ISISLevel1", "I L1"},
                                                        {"ISISLevel2", "I L2"},
                                                        {"nexthopGroupStaticRoute", "NG"},
                                                        {"dropRoute", "S"},
                                                        {"dhcp", "DH"},
                                                        {"martian", "M"},
                                                        {"dynamicPolicy", "DP"},
                                                        {"l2NexthopGroupRoute", "L2NG"},
                                                        {"routeCacheConnected", "RC"},
                                                        {"routeCacheForward", "RCF"},
                                                        {"gribi", "G"}};
   for (auto const& [word, code] : cases) {
      EXPECT_EQ(ProtocolCodeWordHelper::protocolCodeWordToCode(word).bytes(), code) << word;
   }
}

TEST(ProtocolCodeWordDeathTest, unknownWords) {
   for (char const* const word : {"", "ospf", "connecte", "Static"}) {
      EXPECT_DEATH(ProtocolCodeWordHelper::protocolCodeWordToCode(word),
                   "0 && \"Invalid string\", source Kiv/CliSupport")
          << word;
   }
}

template <class T>
T parsedBack(T const& value) {
   return Zam::strepToValue<T>(Zam::valueToStrep(value));
}

TEST(ConfigTypesTest, textualForms) {
   RouteSortKey const sortKey{{}, Lumen::IpGenPrefix::parse("10.0.0.0/8"), 9};
   EXPECT_EQ(Zam::valueToStrep(sortKey), "Value('Kiv::RouteSortKey', ** {'prefix': '10.0.0.0/8', 'preference': 9})");
   RoutingConsts const consts{{}, 2, 3, "it's", 5};
   EXPECT_EQ(Zam::valueToStrep(consts),
             "Value('Kiv::RoutingConsts', ** {'defaultStaticRoutePreference': 2, 'defaultStaticRouteTag': 3, "
             "'defaultStaticRouteName': 'it\\'s', 'defaultStaticRouteMetric': 5})");
   AddressQueryResult const result{{}, false, "No interfaces"};
   EXPECT_EQ(Zam::valueToStrep(result),
             "Value('Kiv::AddressQueryResult', ** {'acceptable': False, 'msg': 'No interfaces'})");
   RdAssignmentChecker checker(nullptr, nullptr, "red", rd("1:1"));
   checker.acceptable = false;
   EXPECT_EQ(Zam::valueToStrep(checker),
             "Value('Kiv::RdAssignmentChecker', ** {'rdAutoInputDir': None, 'rdConfigInputDir': None, 'vrfName': "
             "'red', 'routeDistinguisher': '1:1', 'acceptable': False, 'errorMessage': ''})");
   NexthopInfo info{{}, "cmd", {}};
   info.sortedViaIs({}, " via");
   EXPECT_EQ(Zam::valueToStrep(info), "Value('Kiv::NexthopInfo', ** {'nexthopCmd': 'cmd', 'sortedVia': None})");
   StaticRoutesCliSaver saver;
   saver.sortedRouteIs(sortKey, info);
   EXPECT_EQ(Zam::valueToStrep(saver), "Value('Kiv::StaticRoutesCliSaver', ** {'sortedRoute': None})");
   EXPECT_EQ(Zam::valueToStrep(StaticRoutesRibCommon()),
             "Value('Kiv::StaticRoutesRibCommon', ** {'sortedRoute': None, 'allIntfConfig': None, 'dynamic': False, "
             "'fd': 0, 'fmt': 0, 'tag': 0, 'routeInputConf': None})");
   EXPECT_EQ(Zam::valueToStrep(AddressAssignmentChecker()) + Zam::valueToStrep(Address6AssignmentChecker()) +
                 Zam::valueToStrep(ClearIntfRoutesAndViasHelper()),
             "");
   EXPECT_EQ(Zam::valueToStrep(AddrMatchType::allowExactMatch), "allowExactMatch");

   EXPECT_EQ(parsedBack(sortKey), sortKey);
   EXPECT_EQ(parsedBack(consts), consts);
   EXPECT_EQ(parsedBack(result), result);
   EXPECT_EQ(parsedBack(checker), checker);
   EXPECT_EQ(std::hash<RdAssignmentChecker>()(parsedBack(checker)), std::hash<RdAssignmentChecker>()(checker));
   EXPECT_TRUE(Zam::isSet(saver) && Zam::isSet(info) && !Zam::isSet(RoutingConsts()) && Zam::isSet(consts));
   for (auto const& other : {RoutingConsts{{}, 0, 0, "", 0}, RoutingConsts{{}, 1, 1, "", 0},
                             RoutingConsts{{}, 1, 0, "n", 0}, RoutingConsts{{}, 1, 0, "", 1}}) {
      EXPECT_TRUE(Zam::isSet(other)) << other;
   }
}

TEST(ConfigTypesDeathTest, typesWithACollectionAreNotParsed) {
   EXPECT_DEATH(parsedBack(NexthopInfo()), "No String constructor for NexthopInfo - has collection");
   EXPECT_DEATH(parsedBack(StaticRoutesCliSaver()), "No String constructor for StaticRoutesCliSaver - has collection");
   EXPECT_DEATH(parsedBack(StaticRoutesRibCommon()),
                "No String constructor for StaticRoutesRibCommon - has collection");
}

TEST(RouteSortKeyTest, orderLeavesTheFamilyOut) {
   std::vector<RouteSortKey> keys;
   for (char const* const prefix :
        {"0.0.0.0/0", "10.0.0.0/8", "10.0.0.0/16", "2001:db8::/32", "2001:db8::/48", "none"}) {
      keys.push_back({{}, Lumen::IpGenPrefix::parse(prefix), 1});
      keys.push_back({{}, Lumen::IpGenPrefix::parse(prefix), 2});
   }
   for (std::size_t i = 0; i < keys.size(); ++i) {
      for (std::size_t j = 0; j < keys.size(); ++j) {
         EXPECT_EQ(keys[i] < keys[j], i < j) << keys[i] << keys[j];
         EXPECT_TRUE(i >= j || keys[i].sortWord() <= keys[j].sortWord()) << keys[i] << keys[j];
      }
   }
   RouteSortKey const ip4{{}, Lumen::IpGenPrefix::parse("0.0.0.0/0"), 1};
   RouteSortKey const ip6{{}, Lumen::IpGenPrefix::parse("::/0"), 1};
   EXPECT_TRUE(!(ip4 < ip6) && !(ip6 < ip4) && ip4 != ip6);
}

// As a scripting layer uses them, by name and with loose arguments.
TEST(ConfigTypesTest, byName) {
   registerTypes();
   auto const& registry = Zam::TypeRegistry::instance();
   auto const construct = [&](char const* name, std::vector<std::any> const& arguments) {
      return registry.type(name)->construct(arguments);
   };
   auto const list = routeList();
   auto const status = Zam::makePtr<Routing::Hardware::Status>();
   auto helper = construct("Kiv::IpRouteCliPluginHelper", {std::any(status)});
   auto const& helperType = *registry.type("Kiv::IpRouteCliPluginHelper");
   std::vector<std::any> const arguments{list,
                                         "default",
                                         "10.0.0.0/8",
                                         5,
                                         RouteType::forward,
                                         "",
                                         "Ethernet1",
                                         false,
                                         0,
                                         false,
                                         0,
                                         "",
                                         false,
                                         "",
                                         false,
                                         7U,
                                         "",
                                         "1.1.1.1",
                                         "name",
                                         true,
                                         "",
                                         Lumen::IntfId(),
                                         9U};
   EXPECT_TRUE(std::any_cast<bool>(helperType.call(helper, "manageRoute", arguments)));
   EXPECT_FALSE(std::any_cast<bool>(helperType.call(helper, "isValidPrefix", std::vector<std::any>{"", true})));
   EXPECT_EQ(std::any_cast<Zam::String>(helperType.attribute(helper, "errorMsg")).bytes(), "Mask must be contiguous");

   auto saver = construct("Kiv::StaticRoutesCliSaver", {});
   auto const text = registry.type("Kiv::StaticRoutesCliSaver")
                         ->call(saver, "save", std::vector<std::any>{list, false, "r ", RoutingConsts()});
   EXPECT_EQ(std::any_cast<Zam::String>(text).bytes(),
             "r 10.0.0.0/8 Ethernet1 1.1.1.1 track bfd 5 tag 7 name name metric 9\n");

   auto clearer = construct("Kiv::ClearIntfRoutesAndViasHelper", {});
   registry.type("Kiv::ClearIntfRoutesAndViasHelper")
       ->call(clearer, "clearIntfRoutesAndViasHelper", std::vector<std::any>{list, "Ethernet1"});
   EXPECT_TRUE(list->route().empty());

   auto const rdType = registry.type("Kiv::RdAssignmentChecker");
   auto const checker = construct("Kiv::RdAssignmentChecker", {dirOf({{"blue", "1:1"}}), nullptr, "red", rd("1:1")});
   EXPECT_FALSE(std::any_cast<bool>(rdType->attribute(checker, "acceptable")));

   auto const params =
       construct("Kiv::AddressQueryParams", {nullptr, "Ethernet1", "Management", Zam::fromText("allowExactMatch"),
                                             AddrMatchType::allowNoMatch, Lumen::IpAddrWithMask::parse("10.0.0.1/8")});
   auto addresses = construct("Kiv::AddressAssignmentChecker", {});
   auto const answer =
       registry.type("Kiv::AddressAssignmentChecker")->call(addresses, "check", std::vector<std::any>{params});
   EXPECT_EQ(std::any_cast<AddressQueryResult>(answer).msg.bytes(), "No interfaces");
   auto const params6 =
       construct("Kiv::Address6QueryParams", {nullptr, "Ethernet1", "", Lumen::Ip6AddrWithMask::parse("fe80::1/64")});
   auto addresses6 = construct("Kiv::Address6AssignmentChecker", {});
   auto const answer6 =
       registry.type("Kiv::Address6AssignmentChecker")->call(addresses6, "check", std::vector<std::any>{params6});
   EXPECT_FALSE(std::any_cast<AddressQueryResult>(answer6).acceptable);

   auto const code =
       registry.type("Kiv::ProtocolCodeWordHelper")->call("protocolCodeWordToCode", std::vector<std::any>{"eBGP"});
   EXPECT_EQ(std::any_cast<Zam::String>(code).bytes(), "B E");
   auto ribCommon = construct("Kiv::StaticRoutesRibCommon", {});
   EXPECT_TRUE(std::any_cast<Zam::String>(registry.type("Kiv::StaticRoutesRibCommon")->call(ribCommon, "legend"))
                   .bytes()
                   .starts_with("Codes: "));
}

TEST(FlatMapTest, agreesWithAMap) {
   std::minstd_rand engine(46);
   Zam::FlatMap<U32, std::string> flat;
   std::map<U32, std::string> reference;
   for (int i = 0; i < 5000; ++i) {
      auto const at = static_cast<U32>(engine() % 40);
      if (engine() % 3 == 0) {
         EXPECT_EQ(flat.erase(at), reference.erase(at) != 0);
      } else if (engine() % 3 == 0) {
         flat.valueOf(at) += "x";
         reference[at] += "x";
      } else {
         flat.insertOrReplace(at, std::to_string(i));
         reference[at] = std::to_string(i);
      }
      auto const same = [](auto const& a, auto const& b) { return a.key == b.first && a.value == b.second; };
      ASSERT_TRUE(std::equal(flat.begin(), flat.end(), reference.begin(), reference.end(), same)) << i;
      auto const* const found = flat.find(at);
      ASSERT_EQ(found != nullptr ? *found : "none", reference.contains(at) ? reference[at] : "none");
   }
}

// Texts as a user may type them: each is refused with one of the runtime's errors or is a value that its own text
// gives again.
template <class T>
void fuzz(std::string_view alphabet, std::vector<std::string> const& seeds) {
   std::minstd_rand engine(45);
   int good = 0;
   for (int i = 0; i < 20000; ++i) {
      auto text = seeds[engine() % seeds.size()];
      for (auto changes = engine() % 4; changes > 0; --changes) {
         auto const at = engine() % (text.size() + 1);
         auto const letter = alphabet[engine() % alphabet.size()];
         if (engine() % 2 == 0 && at < text.size()) {
            text[at] = letter;
         } else if (engine() % 2 == 0) {
            text.insert(at, 1, letter);
         } else {
            text.erase(at, 1);
         }
      }
      try {
         auto const value = T::parse(text);
         ASSERT_EQ(T::parse(value.stringValue()), value) << text;
         ASSERT_LE(value.stringValue().size(), T::maxTextLength) << text;
         ++good;
      } catch (Zam::ParseError const&) {
      } catch (Zam::RangeError const&) {
      }
   }
   EXPECT_TRUE(good > 1000 && good < 19000) << good;
}

TEST(ConfigTextFuzz, refusedOrReadBack) {
   constexpr std::string_view numbers = "0123456789.:/- ";
   fuzz<RouteDistinguisher>(numbers, {"65000:1", "1.2.3.4:5", "65536:65535", "1.65535:9", "0:0"});
   fuzz<Lumen::IpGenPrefix>("0123456789abcdef.:/ ", {"10.0.0.0/8", "0.0.0.0/0", "2001:db8::/32", "::/0", "1.2.3.4/32"});
   fuzz<Lumen::MplsLabel>(numbers, {"16", "1048575", "8388608", "0"});
   fuzz<Lumen::EthAddr>("0123456789abcdefABCDEFg:.", {"00:1c:73:00:00:01", "FF:ff:ff:ff:ff:ff"});
}

}  // namespace

}  // namespace Kiv::Testing
