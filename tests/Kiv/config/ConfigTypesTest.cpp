#include "ConfigTesting.h"
#include "Zam/FlatMap.h"
#include "Zam/TypeRegistry.h"

namespace Kiv::Testing {

namespace {

using Lumen::RouteDistinguisher;

using InputDir = RdAssignmentChecker::InputDir;

RouteDistinguisher rd(std::string_view text) {
   return RouteDistinguisher::parse(text);
}

// The value and its text, or what is wrong.
std::string madeOf(std::string_view text) {
   try {
      auto const value = rd(text);
      EXPECT_EQ(Zam::strepToValue<RouteDistinguisher>(Zam::valueToStrep(value)), value);
      std::ostringstream made;
      made << std::hex << value.value() << " " << value;
      return made.str();
   } catch (Zam::ParseError const&) {
      return "malformed";
   } catch (Zam::RangeError const&) {
      return "out of range";
   }
}

TEST(RouteDistinguisherTest, textForms) {
   for (auto const& [text, made] : casesOf("route distinguishers")) {
      EXPECT_EQ(madeOf(text), made) << text;
   }
}

// From the names of VRFs and what each is assigned; green has another one in every input.
Zam::Ptr<InputDir> dirOf(std::string const& assignments) {
   auto const dir = Zam::makePtr<InputDir>();
   auto const parts = partsOf(assignments);
   for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
      auto const input = Zam::makePtr<Ip::RouteDistinguisherInput>();
      input->routeDistinguisherIs(parts[i], rd(parts[i + 1]));
      input->routeDistinguisherIs("green", rd("7:7"));
      dir->entityIs("input" + std::to_string(dir->size()), input);
   }
   return dir;
}

TEST(RdAssignmentCheckerTest, table) {
   for (auto const& [text, complaint] : casesOf("1:1 for VRF red: assigned automatically | configured")) {
      auto const bar = text.find('|');
      RdAssignmentChecker const checker(dirOf(text.substr(0, bar)), dirOf(text.substr(bar + 1)), "red", rd("1:1"));
      EXPECT_EQ(checker.acceptable, complaint.empty()) << text;
      EXPECT_EQ(checker.errorMessage.bytes(), complaint) << text;
   }
   EXPECT_TRUE(RdAssignmentChecker(nullptr, nullptr, "red", rd("1:1")).acceptable);
}

TEST(RdAssignmentCheckerDeathTest, aForeignEntity) {
   auto const dir = dirOf("");
   dir->entityIs("foreign", Zam::makePtr<Ip::Config>());
   EXPECT_DEATH(RdAssignmentChecker(dir, nullptr, "red", rd("1:1")),
                "__null != routeDistinguisherInput, source Kiv/CliSupport");
}

TEST(ProtocolCodeWordTest, theFirstTypeWhoseWordBeginsIt) {
   for (auto const& [word, code] : casesOf("protocol code words")) {
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
   RoutingConsts const consts{{}, 2, 3, "it's", 5};
   AddressQueryResult const result{{}, false, "No interfaces"};
   RdAssignmentChecker checker(nullptr, nullptr, "red", rd("1:1"));
   checker.acceptable = false;
   NexthopInfo info{{}, "cmd", {}};
   info.sortedViaIs({}, " via");
   StaticRoutesCliSaver saver;
   saver.sortedRouteIs(sortKey, info);
   auto const texts = [](auto const&... values) { return std::vector<std::string>{Zam::valueToStrep(values)...}; };
   std::vector<std::string> expected;
   for (auto const& [name, text] : casesOf("textual forms")) {
      expected.push_back(text);
   }
   EXPECT_EQ(texts(sortKey, consts, result, checker, info, saver, StaticRoutesRibCommon(), AddressAssignmentChecker(),
                   Address6AssignmentChecker(), ClearIntfRoutesAndViasHelper(), AddrMatchType::allowExactMatch),
             expected);

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
   auto const type = [](char const* name) { return Zam::TypeRegistry::instance().type(std::string("Kiv::") + name); };
   auto const construct = [&](char const* name, auto const&... arguments) {
      return type(name)->construct(std::vector<std::any>{arguments...});
   };
   auto const call = [&](char const* name, std::any object, char const* operation, auto const&... arguments) {
      return type(name)->call(object, operation, std::vector<std::any>{arguments...});
   };
   auto const callNew = [&](char const* name, char const* operation, auto const&... arguments) {
      return call(name, construct(name), operation, arguments...);
   };
   auto const list = routeList();
   auto const helper = construct("IpRouteCliPluginHelper", Zam::makePtr<Routing::Hardware::Status>());
   EXPECT_TRUE(std::any_cast<bool>(call("IpRouteCliPluginHelper", helper, "manageRoute", list, "default", "10.0.0.0/8",
                                        5, Zam::fromText("forward"), "", "Ethernet1", false, 0, false, 0, "", false, "",
                                        false, 7U, "", "1.1.1.1", "name", true, "", Lumen::IntfId(), 9U)));
   EXPECT_FALSE(std::any_cast<bool>(call("IpRouteCliPluginHelper", helper, "isValidPrefix", "", true)));
   EXPECT_EQ(std::any_cast<Zam::String>(type("IpRouteCliPluginHelper")->attribute(helper, "errorMsg")).bytes(),
             "Mask must be contiguous");
   EXPECT_EQ(
       std::any_cast<Zam::String>(callNew("StaticRoutesCliSaver", "save", list, false, "r ", RoutingConsts())).bytes(),
       "r 10.0.0.0/8 Ethernet1 1.1.1.1 track bfd 5 tag 7 name name metric 9\n");
   callNew("ClearIntfRoutesAndViasHelper", "clearIntfRoutesAndViasHelper", list, "Ethernet1");
   EXPECT_TRUE(list->route().empty());

   auto const checker = construct("RdAssignmentChecker", dirOf("blue 1:1"), nullptr, "red", rd("1:1"));
   EXPECT_FALSE(std::any_cast<bool>(type("RdAssignmentChecker")->attribute(checker, "acceptable")));
   auto const params =
       construct("AddressQueryParams", nullptr, "Ethernet1", "Management", Zam::fromText("allowExactMatch"),
                 AddrMatchType::allowNoMatch, Lumen::IpAddrWithMask::parse("10.0.0.1/8"));
   EXPECT_EQ(std::any_cast<AddressQueryResult>(callNew("AddressAssignmentChecker", "check", params)).msg.bytes(),
             "No interfaces");
   auto const params6 =
       construct("Address6QueryParams", nullptr, "Ethernet1", "", Lumen::Ip6AddrWithMask::parse("fe80::1/64"));
   EXPECT_FALSE(std::any_cast<AddressQueryResult>(callNew("Address6AssignmentChecker", "check", params6)).acceptable);

   auto const& matchType = *type("AddrMatchType");
   auto const match = matchType.construct(std::vector<std::any>{Zam::fromText("allowAddressMatch")});
   EXPECT_EQ(std::any_cast<AddrMatchType>(match), AddrMatchType::allowAddressMatch);
   EXPECT_EQ(matchType.toText(type("AddressQueryParams")->attribute(params, "primaryMatch")), "allowExactMatch");
   EXPECT_TRUE(matchType.isSet(match) && !matchType.isSet(AddrMatchType::allowNoMatch));

   auto const code = type("ProtocolCodeWordHelper")->call("protocolCodeWordToCode", std::vector<std::any>{"eBGP"});
   EXPECT_EQ(std::any_cast<Zam::String>(code).bytes(), "B E");
   EXPECT_TRUE(std::any_cast<Zam::String>(callNew("StaticRoutesRibCommon", "legend")).bytes().starts_with("Codes: "));
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
