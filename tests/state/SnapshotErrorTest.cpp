#include "state/Snapshot.h"
#include "support/Testing.h"

namespace state {
namespace {

std::string errorOf(std::string const& text) {
   return testsupport::complaintOf<JsonError>([&] { parseSnapshot("f.json", text); });
}

// With an interface, a second VRF and these members of the default VRF.
std::string inDefault(std::string const& members) {
   return R"({"interfaces": {"e1": {}}, "nexthopGroups": {"g": 5}, "vrfs": {"default": {)" + members +
          R"(}, "red": {"id": 7}}})";
}

std::string snapshot(std::string_view kind, std::string const& text) {
   std::string const route = R"("ipv4Routes": [{"prefix": "10.0.0.0/8", "type": "kernel"}, {)";
   if (kind == "route") {
      return inDefault(route + text + "}]");
   }
   if (kind == "via") {
      return inDefault(route + R"("prefix": "11.0.0.0/8", "type": "kernel", "vias": [{)" + text + "}]}]");
   }
   return kind == "vrf" ? inDefault(text) : text;
}

TEST(SnapshotErrors, NameTheFileThePlaceTheValueAndTheReason) {
   std::ifstream file(KIV_SOURCE_DIR "/tests/state/snapshotErrors.txt");
   int cases = 0;
   for (std::string line; std::getline(file, line);) {
      auto const text = line.find(' ');
      auto const error = line.find(" => ");
      if (line.starts_with('#')) {
         continue;
      }
      EXPECT_EQ(errorOf(snapshot(line.substr(0, text), line.substr(text + 1, error - text - 1))),
                "f.json: " + line.substr(error + 4));
      ++cases;
   }
   EXPECT_GT(cases, 60);
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
