#include "support/StrictJson.h"
#include "tests/programs/kiv/ProgramRun.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>

namespace {

using testsupport::Finished;
using testsupport::JsonValue;
using testsupport::ProgramRun;
using testsupport::StrictJson;

// Small enough to know by heart: who shares a FEC, and what only a filter tells apart.
constexpr char const* box = R"({
   "interfaces": {"e1": {"ipv4": ["192.0.2.1/30"], "ipv6": ["fd00:0:0:1::1/64"]}, "e2": {}, "e3": {"vrf": "alpha"},
                  "lo": {"loopback": true, "ipv4": ["10.9.9.9/32"]}},
   "nexthopGroups": {"g": 7, "h": 8},
   "fecs": {
      "ipv4:1": [{"nexthop": "192.0.2.2", "interface": "e1"}],
      "ipv4:2": [{"nexthop": "192.0.2.2", "interface": "e1"}, {"nexthop": "192.0.2.6", "interface": "e2"}],
      "ipv4:3": [{"nexthopGroup": "h"}, {"nexthop": "192.0.2.2", "interface": "e1"}],
      "ipv4:4": [{"nexthop": "192.0.2.6", "interface": "e2"}, {"nexthop": "192.0.2.7", "interface": "e2"},
                 {"nexthop": "192.0.2.8", "interface": "e2", "backup": true}],
      "ipv6:1": [{"nexthop": "fe80::1", "interface": "e2"}],
      "ipv6:2": [{"nexthop": "fe80::1", "interface": "e1"}, {"nexthop": "fe80::1", "interface": "e2"}]},
   "vrfs": {
      "zeta": {"id": 1, "ipv4Routes": [
         {"prefix": "10.1.0.0/16", "type": "eBgp", "fec": "ipv4:1"},
         {"prefix": "172.16.0.0/12", "type": "rip", "fec": "ipv4:2"}]},
      "alpha": {"id": 2, "ipv4Routes": [{"prefix": "10.1.0.0/16", "type": "iBgp", "fec": "ipv4:2"}]},
      "default": {
         "ipv4Routes": [
            {"prefix": "0.0.0.0/0", "type": "staticConfig", "fec": "ipv4:4"},
            {"prefix": "10.0.0.0/8", "type": "staticConfig", "fec": "ipv4:1"},
            {"prefix": "10.1.0.0/16", "type": "eBgp", "fec": "ipv4:2"},
            {"prefix": "10.1.1.0/24", "type": "iBgp", "fec": "ipv4:2"},
            {"prefix": "10.2.0.0/16", "type": "ospfIntraArea", "fec": "ipv6:1"},
            {"prefix": "10.3.0.0/16", "type": "nexthopGroup", "vias": [{"nexthopGroup": "g"}]},
            {"prefix": "10.4.0.0/16", "type": "staticConfig", "fec": "ipv4:3"},
            {"prefix": "10.5.0.0/16", "type": "martian", "vias": []},
            {"prefix": "10.6.0.0/16", "type": "rip", "vias": [{"nexthop": "192.0.2.9"}]},
            {"prefix": "10.9.9.9/32", "type": "receive", "vias": [{"interface": "lo"}]},
            {"prefix": "192.0.2.0/30", "type": "connected", "vias": [{"interface": "e1"}]}],
         "ipv6Routes": [
            {"prefix": "::/0", "type": "eBgp", "fec": "ipv6:2"},
            {"prefix": "2001:db8::/32", "type": "ospf", "fec": "ipv6:1"},
            {"prefix": "2001:db8:1::/48", "type": "isisLevel1", "fec": "ipv6:2"},
            {"prefix": "fe80::/10", "type": "receive", "vias": [{"interface": "e1"}]}]}}})";

// The routes of a document, with the next hops and interfaces of their vias when asked: "10.0.0.0/8 10.1.0.0/16", or
// for several VRFs "default: 10.0.0.0/8 | red:".
std::string routesOf(std::string const& text, bool withVias) {
   auto const document = StrictJson::parse(text);
   auto const* const vrfs = document ? document->find("vrfs") : nullptr;
   if (vrfs == nullptr) {
      return "no document: " + text;
   }
   std::string result;
   for (auto const& [name, vrf] : vrfs->members) {
      std::string line = vrfs->members.size() > 1 ? name + ':' : "";
      for (auto const& [prefix, route] : vrf.find("routes")->members) {
         line.append(line.empty() ? "" : " ").append(prefix);
         for (auto const& [key, via] : route.find("vias")->members) {
            if (auto const* const hop = withVias ? via.find("nexthopAddr") : nullptr) {
               auto const* const interface = via.find("interface");
               line.append("@" + hop->text + '%' + (interface != nullptr ? interface->text : "none"));
            }
         }
      }
      result.append(result.empty() ? "" : " | ").append(line);
   }
   return result;
}

class ShowRoute : public testing::Test {
 protected:
   ShowRoute() {
      std::ofstream(run_.dir() / "box.json") << box;
      EXPECT_EQ(run_("$KIV load $DIR/box.json --state $DIR/s").status, 0);
   }

   Finished show(std::string const& line, std::string const& options = "") const {
      return run_("$KIV --state $DIR/s " + options + " show " + line);
   }
   std::string routes(std::string const& line, bool withVias = false) const {
      Finished const finished = show(line, "--json");
      EXPECT_EQ(finished.err, "") << line;
      EXPECT_EQ(finished.status, 0) << line;
      return routesOf(finished.out, withVias);
   }

   struct Case {
      char const* line;
      char const* routes;
   };
   template <std::size_t Size>
   void expect(std::array<Case, Size> const& cases, bool withVias = false) const {
      for (Case const& c : cases) {
         EXPECT_EQ(routes(c.line, withVias), c.routes) << c.line;
      }
   }

   ProgramRun run_;
};

TEST_F(ShowRoute, SelectsByPrefixAndProtocol) {
   expect(std::to_array<Case>({
       {"ip route",
        "0.0.0.0/0 10.0.0.0/8 10.1.0.0/16 10.1.1.0/24 10.2.0.0/16 10.3.0.0/16 10.4.0.0/16 10.9.9.9/32 192.0.2.0/30"},
       {"ip route all",
        "0.0.0.0/0 10.0.0.0/8 10.1.0.0/16 10.1.1.0/24 10.2.0.0/16 10.3.0.0/16 10.4.0.0/16 10.5.0.0/16 10.6.0.0/16 "
        "10.9.9.9/32 192.0.2.0/30"},
       {"ip route 10.1.1.200", "10.1.1.0/24"},
       {"ip route 10.1.2.0", "10.1.0.0/16"},
       {"ip route 10.1.0.0/16", "10.1.0.0/16"},
       {"ip route 10.1.0.0/20", "10.1.0.0/16"},
       {"ip route 10.0.0.0/7", "0.0.0.0/0"},
       {"ip route 172.16.0.1", "0.0.0.0/0"},
       {"ip route 0.0.0.0/0", "0.0.0.0/0"},
       {"ip route 10.5.0.1", "10.0.0.0/8"},
       {"ip route 10.5.0.1 all", "10.5.0.0/16"},
       {"ip route 10.1.0.0/16 longer-prefixes", "10.1.0.0/16 10.1.1.0/24"},
       {"ip route longer 10.1.1.0", ""},
       {"ip route longer 10.9.9.9", "10.9.9.9/32"},
       {"ip route 0.0.0.0/0 longer static", "0.0.0.0/0 10.0.0.0/8 10.3.0.0/16 10.4.0.0/16"},
       {"ip route bgp", "10.1.0.0/16 10.1.1.0/24"},
       {"ip route static", "0.0.0.0/0 10.0.0.0/8 10.3.0.0/16 10.4.0.0/16"},
       {"ip route connected", "10.9.9.9/32 192.0.2.0/30"},
       {"ip route ospf", "10.2.0.0/16"},
       {"ip route ospf3", ""},
       {"ip route martian", ""},
       {"ip route martian all", "10.5.0.0/16"},
       {"ip route 10.1.1.1 static", "10.0.0.0/8"},
       {"ip route 10.1.1.1 kernel", ""},
       {"ipv6 route", "::/0 2001:db8::/32 2001:db8:1::/48"},
       {"ipv6 route all", "::/0 2001:db8::/32 2001:db8:1::/48 fe80::/10"},
       {"ipv6 route ospf", "2001:db8::/32"},
       {"ipv6 route ospf3", "2001:db8::/32"},
       {"ipv6 route 2001:db8:1::77", "2001:db8:1::/48"},
       {"ipv6 route 2001:db8::/32 longer isis", "2001:db8:1::/48"},
       {"ipv6 route ::", "::/0"},
   }));
}

TEST_F(ShowRoute, SelectsByWhereRoutesLeave) {
   expect(std::to_array<Case>({
       {"ip route nexthop 192.0.2.6", "0.0.0.0/0 10.1.0.0/16 10.1.1.0/24"},
       {"ip route nexthop fe80::1", "10.2.0.0/16"},
       {"ip route nexthop 192.0.2.77", ""},
       {"ip route nexthop 192.0.2.6 bgp", "10.1.0.0/16 10.1.1.0/24"},
       {"ip route nexthop 192.0.2.6 static", "0.0.0.0/0"},
       {"ip route interface e2", "0.0.0.0/0 10.1.0.0/16 10.1.1.0/24 10.2.0.0/16"},
       {"ip route interface e3", ""},
       {"ip route interface e1 nexthop 192.0.2.6", "10.1.0.0/16 10.1.1.0/24"},
       {"ip route nexthop-group g", "10.3.0.0/16"},
       {"ip route nexthop-group any", "10.3.0.0/16 10.4.0.0/16"},
       {"ip route nexthop-group any interface e1", "10.4.0.0/16"},
       {"ip route nexthop-group h nexthop 192.0.2.6", ""},
       // What a filter hides does not end the search for the longest match.
       {"ip route 10.2.0.1 nexthop 192.0.2.2", "10.0.0.0/8"},
       {"ip route 10.2.0.1 interface e2", "10.2.0.0/16"},
       {"ip route 10.3.0.1 interface e2", "0.0.0.0/0"},
       {"ip route 10.3.0.1 interface e3", ""},
       {"ipv6 route nexthop fe80::1", "::/0 2001:db8::/32 2001:db8:1::/48"},
       {"ipv6 route nexthop fe80::1 interface e1", "::/0 2001:db8:1::/48"},
       {"ipv6 route 2001:db8::1 interface e1", "::/0"},
       {"ipv6 route interface e3", ""},
   }));
}

// The first route with a FEC is hidden or shown as those are that share it with a route before them.
TEST_F(ShowRoute, SelectsLongerPrefixesByWhereTheyLeave) {
   expect(std::to_array<Case>({
       {"ip route 10.0.0.0/8 longer nexthop 192.0.2.6", "10.1.0.0/16 10.1.1.0/24"},
       {"ip route 10.0.0.0/8 longer nexthop 192.0.2.6 bgp interface e1", "10.1.0.0/16 10.1.1.0/24"},
       {"ip route 10.0.0.0/8 longer nexthop 192.0.2.77", ""},
       {"ip route 0.0.0.0/0 longer interface e2", "0.0.0.0/0 10.1.0.0/16 10.1.1.0/24 10.2.0.0/16"},
       {"ip route 0.0.0.0/0 longer interface e1 nexthop 192.0.2.2", "10.0.0.0/8 10.1.0.0/16 10.1.1.0/24 10.4.0.0/16"},
       {"ip route 10.0.0.0/8 longer nexthop-group any", "10.3.0.0/16 10.4.0.0/16"},
       {"ip route 10.2.0.0/16 longer nexthop fe80::1", "10.2.0.0/16"},
       {"ipv6 route ::/0 longer interface e1", "::/0 2001:db8:1::/48"},
       {"ip route vrf all 10.0.0.0/8 longer nexthop 192.0.2.6",
        "default: 10.1.0.0/16 10.1.1.0/24 | alpha: 10.1.0.0/16 | zeta:"},
   }));
}

TEST_F(ShowRoute, ShowsOnlyTheViasThatMatch) {
   constexpr bool withVias = true;
   expect(std::to_array<Case>({
              {"ip route nexthop 192.0.2.6 bgp",
               "10.1.0.0/16@192.0.2.2%e1@192.0.2.6%e2 10.1.1.0/24@192.0.2.2%e1@192.0.2.6%e2"},
              {"ip route nexthop 192.0.2.6 matching-vias-only",
               "0.0.0.0/0@192.0.2.6%e2 10.1.0.0/16@192.0.2.6%e2 10.1.1.0/24@192.0.2.6%e2"},
              {"ip route interface e1 matching-vias-only 10.1.1.1", "10.1.1.0/24@192.0.2.2%e1"},
              {"ip route 0.0.0.0/0 interface e2 nexthop 192.0.2.8 matching", "0.0.0.0/0@192.0.2.8%e2"},
              {"ip route 10.0.0.0/8 longer interface e2 matching",
               "10.1.0.0/16@192.0.2.6%e2 10.1.1.0/24@192.0.2.6%e2 10.2.0.0/16@fe80::1%e2"},
              {"ipv6 route nexthop fe80::1 interface e2 matching",
               "::/0@fe80::1%e2 2001:db8::/32@fe80::1%e2 2001:db8:1::/48@fe80::1%e2"},
              // No via matches both.
              {"ip route interface e1 nexthop 192.0.2.6 matching", ""},
              {"ip route 0.0.0.0/0 longer interface e1 nexthop 192.0.2.6 matching", ""},
          }),
          withVias);
}

// The default VRF first, then by name; in text each under its own header.
TEST_F(ShowRoute, ShowsOneVrfOrAll) {
   expect(std::to_array<Case>({
       {"ip route vrf zeta", "10.1.0.0/16 172.16.0.0/12"},
       {"ip route vrf default 10.1.1.1", "10.1.1.0/24"},
       {"ip route vrf all 10.1.1.1", "default: 10.1.1.0/24 | alpha: 10.1.0.0/16 | zeta: 10.1.0.0/16"},
       {"ip route rip vrf all", "default: | alpha: | zeta: 172.16.0.0/12"},
       {"ipv6 route vrf all", "default: ::/0 2001:db8::/32 2001:db8:1::/48 | alpha: | zeta:"},
   }));
   std::string headers;
   std::istringstream text(show("ip route vrf all").out);
   for (std::string line; std::getline(text, line);) {
      headers += line.starts_with("VRF: ") ? line + '\n' : "";
   }
   EXPECT_EQ(headers, "VRF: default\nVRF: alpha\nVRF: zeta\n");
}

TEST_F(ShowRoute, NamesThePrefixOfAnIpv6Request) {
   struct Header {
      char const* line;
      char const* text;
   };
   constexpr auto cases = std::to_array<Header>({
       {"ipv6 route 2001:db8::5", "\nRouting entry for 2001:db8::5\n"},
       {"ipv6 route 2001:db8::5/128", "\nRouting entry for 2001:db8::5/128\n"},
       {"ipv6 route 2001:db8::/32 longer", "\nRouting entry for 2001:db8::/32\n"},
       {"ipv6 route nexthop fe80::1", "\nDisplaying 3 of 4 IPv6 routing table entries\n"},
   });
   for (Header const& c : cases) {
      EXPECT_NE(show(c.line).out.find(c.text), std::string::npos) << c.line;
   }
}

TEST_F(ShowRoute, RefusesInOneLine) {
   struct Refusal {
      char const* line;
      int status;
      char const* err;
   };
   constexpr auto cases = std::to_array<Refusal>({
       {"ip route vrf nosuch", 1, "\"nosuch\": show ip route: no such VRF"},
       {"ip route vrf All", 1, "\"All\": show ip route: no such VRF"},
       {"ipv6 route vrf all interface e9", 1, "\"e9\": show ipv6 route: no such interface"},
       {"ip route interface e", 1, "\"e\": show ip route: no such interface"},
       {"ip route nexthop-group x vrf zeta", 1, "\"x\": show ip route: no such nexthop group"},
       {"ip route 2001:db8::1", 2,
        "\"2001:db8::1\": word 4 of \"show ip route 2001:db8::1\": IPv6 where an IPv4 address or prefix should be"},
       {"ipv6 route vrf red 10.0.0.0/8", 2,
        "\"10.0.0.0/8\": word 6 of \"show ipv6 route vrf red 10.0.0.0/8\": IPv4 where an IPv6 address or prefix "
        "should be"},
       {"ip route 10.1.0.0/8", 2,
        "\"10.1.0.0/8\": word 4 of \"show ip route 10.1.0.0/8\": host bits set; the prefix is 10.0.0.0/8"},
       {"ip route nexthop 10.0.0.0/8", 2,
        "\"10.0.0.0/8\": word 5 of \"show ip route nexthop 10.0.0.0/8\": not an IP address"},
       {"ip route longer-prefixes", 2,
        "\"longer-prefixes\": word 4 of \"show ip route longer-prefixes\": only together with ADDRESS|PREFIX"},
       {"ip route match nexthop-group any", 2,
        "\"match\": word 4 of \"show ip route match nexthop-group any\": only together with nexthop or interface"},
       {"ip route match nexthop-group any interface e1", 2,
        "\"match\": word 4 of \"show ip route match nexthop-group any interface e1\": not together with nexthop-group"},
       {"ip route bgp ospf", 2, "\"ospf\": word 5 of \"show ip route bgp ospf\": PROTOCOL given twice"},
       {"ip route interface e1 i e2", 2, "\"i\": word 6 of \"show ip route interface e1 i e2\": interface given twice"},
       {"ipv6 route vcs", 2,
        "\"vcs\": word 4 of \"show ipv6 route vcs\": not known here, expected ADDRESS|PREFIX, longer-prefixes, "
        "PROTOCOL, nexthop, interface, nexthop-group, matching-vias-only, all or vrf"},
       {"ip route next", 2, "\"next\": word 4 of \"show ip route next\": ambiguous, could be nexthop or nexthop-group"},
   });
   for (Refusal const& c : cases) {
      for (char const* const options : {"", "--json"}) {
         Finished const finished = show(c.line, options);
         EXPECT_EQ(finished.status, c.status) << c.line;
         EXPECT_EQ(finished.err, "kiv: " + std::string(c.err) + '\n');
         EXPECT_EQ(finished.out, "") << c.line;
      }
   }
}

// Every word of the table is in the help, for both families.
TEST_F(ShowRoute, HelpTellsEveryWord) {
   std::string const help = run_("$KIV help").out;
   std::string const next = run_("$KIV show ip route '?'").out;
   for (char const* const word :
        {"ADDRESS|PREFIX", "longer-prefixes", "nexthop ADDRESS", "interface NAME", "nexthop-group NAME|any",
         "matching-vias-only", "all", "vrf NAME|all", "bgp", "route-cache-forward"}) {
      EXPECT_NE(help.find(word), std::string::npos) << word;
      EXPECT_NE(next.find(std::string("  ") + word + ' '), std::string::npos) << word;
   }
   std::istringstream lines(help);
   for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), 120U) << line;
   }
}

}  // namespace
