#include "programs/state/Snapshot.h"

#include <gtest/gtest.h>

#include <string>

namespace state {
namespace {

std::string errorOf(std::string const& text) {
   try {
      readSnapshot(JsonDocument::parse("f.json", text));
      return "";
   } catch (JsonError const& error) {
      return error.what();
   }
}

struct Case {
   std::string document;
   char const* error;
};

// With an interface, a second VRF and these members of the default VRF.
std::string inDefault(std::string const& members) {
   return R"({"interfaces": {"e1": {}}, "nexthopGroups": {"g": 5}, "vrfs": {"default": {)" + members +
          R"(}, "red": {"id": 7}}})";
}
std::string route(std::string const& members) {
   return inDefault(R"("ipv4Routes": [{"prefix": "10.0.0.0/8", "type": "kernel"}, {)" + members + "}]");
}
std::string via(std::string const& members) {
   return route(R"("prefix": "11.0.0.0/8", "type": "kernel", "vias": [{)" + members + "}]");
}

TEST(SnapshotErrors, NameTheFileThePlaceTheValueAndTheReason) {
   std::vector<Case> const cases{
       {route(R"("prefix": "10.0.0.1/8", "type": "kernel")"),
        R"(f.json: vrfs.default.ipv4Routes[1].prefix: "10.0.0.1/8": host bits set)"},
       {route(R"("prefix": "10.0.0.0/33", "type": "kernel")"),
        R"(f.json: vrfs.default.ipv4Routes[1].prefix: "10.0.0.0/33": not an IPv4 prefix)"},
       {route(R"("prefix": "10.0.0.0", "type": "kernel")"),
        R"(f.json: vrfs.default.ipv4Routes[1].prefix: "10.0.0.0": not an IPv4 prefix)"},
       {route(R"("prefix": "::/0", "type": "kernel")"),
        R"(f.json: vrfs.default.ipv4Routes[1].prefix: "::/0": not an IPv4 prefix)"},
       {route(R"("prefix": 10, "type": "kernel")"), "f.json: vrfs.default.ipv4Routes[1].prefix: 10: not a string"},
       {route(R"("prefix": "10.0.0.0/8", "type": "kernel")"),
        "f.json: vrfs.default.ipv4Routes[1]: {...}: another route has the prefix 10.0.0.0/8"},
       {route(R"("prefix": "11.0.0.0/8")"), R"(f.json: vrfs.default.ipv4Routes[1]: {...}: member "type" is missing)"},
       {route(R"("prefix": "11.0.0.0/8", "type": "ospf")"),
        R"(f.json: vrfs.default.ipv4Routes[1].type: "ospf": no such route type)"},
       {route(R"("prefix": "11.0.0.0/8", "type": 256)"),
        "f.json: vrfs.default.ipv4Routes[1].type: 256: not from 0 to 255"},
       {route(R"("type": "kernel", "metric": -1)"),
        "f.json: vrfs.default.ipv4Routes[1].metric: -1: not a whole number from 0 to 4294967295"},
       {route(R"("type": "kernel", "metric": 1.0)"),
        "f.json: vrfs.default.ipv4Routes[1].metric: 1.0: not a whole number from 0 to 4294967295"},
       {route(R"("type": "kernel", "preference": "1")"),
        R"(f.json: vrfs.default.ipv4Routes[1].preference: "1": not a whole number from 0 to 255)"},
       {route(R"("type": "kernel", "type": "kernel")"),
        R"(f.json: vrfs.default.ipv4Routes[1].type: "kernel": given twice)"},
       {route(R"("type": "kernel", "colour": {"a": 1})"),
        "f.json: vrfs.default.ipv4Routes[1].colour: {...}: unknown member"},
       {route(R"("sourceVrf": "blue")"), R"(f.json: vrfs.default.ipv4Routes[1].sourceVrf: "blue": no such VRF)"},
       {route(R"("fec": "ipv4:3")"), R"(f.json: vrfs.default.ipv4Routes[1].fec: "ipv4:3": no such FEC)"},
       {route(R"("fec": "ipv5:3")"),
        R"(f.json: vrfs.default.ipv4Routes[1].fec: "ipv5:3": not a FEC id such as ipv4:17)"},
       {route(R"("fec": "256:3")"), R"(f.json: vrfs.default.ipv4Routes[1].fec: "256:3": not a FEC id such as ipv4:17)"},
       {route(R"("fec": "1:72057594037927936")"),
        R"(f.json: vrfs.default.ipv4Routes[1].fec: "1:72057594037927936": FEC number not from 1 to 72057594037927935)"},
       {via(R"("interface": "e2")"),
        R"(f.json: vrfs.default.ipv4Routes[1].vias[0].interface: "e2": no such interface)"},
       {via(R"("interface": "e1", "nexthopGroup": "g")"),
        R"(f.json: vrfs.default.ipv4Routes[1].vias[0].nexthopGroup: "g": the via already leaves through e1)"},
       {via(R"("nexthop": "10.0.0.0/8")"),
        R"(f.json: vrfs.default.ipv4Routes[1].vias[0].nexthop: "10.0.0.0/8": not an IP address)"},
       {via(R"("nexthop": "")"), R"(f.json: vrfs.default.ipv4Routes[1].vias[0].nexthop: "": not an IP address)"},
       {via(R"("weight": 65536)"), "f.json: vrfs.default.ipv4Routes[1].vias[0].weight: 65536: not from 0 to 65535"},
       {via(R"("backup": true)"),
        "f.json: vrfs.default.ipv4Routes[1].vias[0]: {...}: a backup without a primary via before it"},
       {via(R"("interface": "e1"}, {"backup": true}, {"interface": "e1")"),
        "f.json: vrfs.default.ipv4Routes[1].vias[2]: {...}: a primary via after a backup"},
       {via(R"("action": "drop")"),
        "f.json: vrfs.default.ipv4Routes[1].vias[0].action: \"drop\": "
        "not one of forward forwardVrf decap decapForwardVrf"},
       {via(R"("tunnel": {"type": 1048576, "index": 0})"),
        "f.json: vrfs.default.ipv4Routes[1].vias[0].tunnel.type: 1048576: not from 0 to 1048575"},
       {inDefault(R"("ipv4Routing": 1)"), "f.json: vrfs.default.ipv4Routing: 1: not true or false"},
       {inDefault(R"("notInHardware": ["::1/64"])"),
        R"(f.json: vrfs.default.notInHardware[0]: "::1/64": host bits set)"},
       {inDefault(R"("notInHardware": ["::/64", "0.0.0.0/0", "::/64"])"),
        R"(f.json: vrfs.default.notInHardware[2]: "::/64": given twice)"},
       {inDefault(R"("notInKernel": [{"prefix": "::/0", "error": 0}])"),
        "f.json: vrfs.default.notInKernel[0].error: 0: 0 is no error"},
       {inDefault(R"("ipv6Routes": {})"), "f.json: vrfs.default.ipv6Routes: {...}: not a list"},
       {inDefault(R"("id": 1)"), "f.json: vrfs.default.id: 1: 0 is the id of the default VRF"},
       {R"({"vrfs": {"a": {"id": 1}, "b": {"id": 1}}})", "f.json: vrfs.b: {...}: another VRF has the id 1"},
       {R"({"vrfs": {"a": {"id": 16777215}}})", "f.json: vrfs.a.id: 16777215: not from 0 to 16777214"},
       {R"({"vrfs": {"a": {}}})", R"(f.json: vrfs.a: {...}: member "id" is missing)"},
       {R"({"vrfs": {"a": {"id": 1}, "a": {"id": 2}}})", "f.json: vrfs.a: {...}: given twice"},
       {R"({"vrfs": {"": {"id": 1}}})", R"(f.json: vrfs[""]: {...}: the name is not of 1 to 100 bytes)"},
       {R"({"vrfs": {"a.b\n": {"id": true}}})",
        R"(f.json: vrfs["a.b\u000a"].id: true: not a whole number from 0 to 16777214)"},
       {R"({"interfaces": {"Ethernet1/1": {"ipv4": ["10.0.0.1/8", "10.0.0.1/8"]}}})",
        R"(f.json: interfaces["Ethernet1/1"].ipv4[1]: "10.0.0.1/8": given twice)"},
       {R"({"interfaces": {"e 1": {}}})",
        R"(f.json: interfaces["e 1"]: {...}: the name is not of 1 to 23 bytes without blanks)"},
       {R"({"nexthopGroups": {"a": 1, "b": 1}})", "f.json: nexthopGroups.b: 1: another nexthop group has this id"},
       {R"({"fecs": {"ipv4:1": [], "0:1": []}})",
        R"(f.json: fecs["0:1"]: [...]: another name of the same FEC is given too)"},
       {R"({"evpnFecs": {"ipv4:1": []}})", R"(f.json: evpnFecs["ipv4:1"]: [...]: not a FEC id such as evpn:1)"},
       {R"({"evpnFecs": {"evpn:1": [{"vtep": "10.0.0.1", "vni": 16777216}]}})",
        R"(f.json: evpnFecs["evpn:1"][0].vni: 16777216: not from 0 to 16777215)"},
       {R"({"tunnels": [{"tunnel": {"type": "ldp", "index": 1}}, {"tunnel": {"type": 2, "index": 1}}]})",
        "f.json: tunnels[1]: {...}: given twice"},
       {R"({"tunnels": [{"tunnel": {"type": 0, "index": 0}}]})",
        "f.json: tunnels[0].tunnel: {...}: type 0 with index 0 is no tunnel"},
       {R"({"tunnels": [{"tunnel": {"type": "gre", "index": 0}}]})",
        "f.json: tunnels[0].tunnel.type: \"gre\": "
        "not one of static ldp bgpLu isisSr isisFlexAlgo rsvpLer evpnVxlan nexthopGroup"},
       {R"({"nexthopGroups": {"g": 5}, "tunnels": [{"tunnel": {"type": 1, "index": 1},
            "backupVias": [{"nexthopGroup": "g", "tunnel": {"type": 1, "index": 2}}]}]})",
        "f.json: tunnels[0].backupVias[0].tunnel: {...}: the via already leaves through NexthopGroup(5)"},
       {R"({"labelStacks": [{"id": 0, "labels": "pop"}]})", "f.json: labelStacks[0].id: 0: 0 is no label stack"},
       {R"({"labelStacks": [{"id": 1, "labels": "push 8388609"}]})",
        R"(f.json: labelStacks[0].labels: "push 8388609": not a label operation such as push 100 200)"},
       {R"({"tunnelTables": {"gre": []}})", "f.json: tunnelTables.gre: [...]: no such tunnel table"},
       {R"({"tunnelTables": {"ldp": [{"index": 17592186044416, "endpoint": "::/0"}]}})",
        "f.json: tunnelTables.ldp[0].index: 17592186044416: not from 0 to 17592186044415"},
       {R"({"tunnelTables": {"ldp": [{"index": 0, "endpoint": "::/0"}, {"index": 0, "endpoint": "::/1"}]}})",
        "f.json: tunnelTables.ldp[1]: {...}: given twice"},
       {R"({"tunnelTables": {"evpnVxlan": [{"index": 1, "endpoint": "::/0"}]}})",
        R"(f.json: tunnelTables.evpnVxlan[0].endpoint: "::/0": unknown member)"},
       {R"({"tunnelNames": [{"tunnel": {"type": 1, "index": 1}}]})",
        R"(f.json: tunnelNames[0]: {...}: member "name" is missing)"},
       {R"({"policies": [{"endpoint": "::1", "color": 1, "tunnel": {"type": 1, "index": 1}},
                         {"color": 1, "endpoint": "0::1", "tunnel": {"type": 1, "index": 2}}]})",
        "f.json: policies[1]: {...}: given twice"},
       {R"({"fecOverrides": [{"fec": "ipv4:1", "override": "ipv4:2"}], "fecs": {"ipv4:1": []}})",
        R"(f.json: fecOverrides[0].override: "ipv4:2": no such FEC)"},
       {R"({"flexAlgorithms": {"a": 127}})", "f.json: flexAlgorithms.a: 127: not from 128 to 255"},
       {R"({"flexAlgorithms": {"a": 256}})", "f.json: flexAlgorithms.a: 256: not from 0 to 255"},
       {R"({"flexAlgorithms": {"a": 128, "b": 128}})",
        "f.json: flexAlgorithms.b: 128: another flexible algorithm has this number"},
       {inDefault(R"("secondRouteConfig": [{"prefix": "::/0"}, {"prefix": "0::/0"}])"),
        "f.json: vrfs.default.secondRouteConfig[1]: {...}: given twice"},
       {R"({"colour": "blue"})", R"(f.json: colour: "blue": unknown member)"},
       {R"([])", "f.json: [...]: not an object"},
       {R"("\u2028text")", "f.json: \"\u2028text\": not an object"},
   };
   for (Case const& c : cases) {
      EXPECT_EQ(errorOf(c.document), c.error);
   }
}

TEST(SnapshotErrors, SayWhereATextStopsBeingJson) {
   auto const place = [](std::string const& text) {
      std::string const error = errorOf(text);
      EXPECT_TRUE(error.starts_with("f.json: ")) << error;
      EXPECT_EQ(error.find('\n'), std::string::npos) << error;
      return error.substr(8, error.find(": ", 8) - 8);
   };
   EXPECT_EQ(place("{\n  \"vrfs\": {,}\n}"), "line 2, column 12");
   EXPECT_EQ(place("{\"vrfs\": {}"), "line 1, column 12");
   EXPECT_EQ(place("{\"vrfs\": {}} x"), "line 1, column 14");
   EXPECT_EQ(place("{\"vrfs\": {},}"), "line 1, column 13");
   EXPECT_EQ(place("{\"a\": 01}"), "line 1, column 8");
   EXPECT_EQ(place("{\"a\": 18446744073709551616}"), "line 1, column 7");
   EXPECT_EQ(place("{\"a\": \"\\x\"}"), "line 1, column 9");
   EXPECT_EQ(place("{\"a\": \"open\n\"}"), "line 1, column 12");
   EXPECT_EQ(place("{}\n\n \"\xff\""), "line 3, column 1");
   EXPECT_EQ(place("{\"a\": tru}"), "line 1, column 10");
   EXPECT_EQ(errorOf(""), "f.json: line 1, column 1: Empty: no JSON found");
   EXPECT_TRUE(errorOf(std::string(5000, '[')).starts_with("f.json: line 1, column 1025: "));
}

}  // namespace
}  // namespace state
