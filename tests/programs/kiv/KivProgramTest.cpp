#include "support/StrictJson.h"
#include "tests/programs/kiv/ProgramRun.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

using testsupport::fileText;
using testsupport::Finished;
using testsupport::ProgramRun;
using testsupport::StrictJson;

// Many routes with many distinct next hops: more than a pipe takes in.
std::string bigSnapshot() {
   std::string text = R"({"interfaces": {"e1": {}}, "vrfs": {"default": {"ipv4Routes": [)";
   for (int i = 0; i < 20000; ++i) {
      std::string const number = std::to_string(i / 250) + "." + std::to_string(i % 250);
      text.append(i == 0 ? "" : ",").append(R"({"prefix": "10.)").append(number);
      text.append(R"(.0/24", "type": "eBgp", "vias": [{"interface": "e1", "nexthop": "11.0.)").append(number);
      text.append("\"}]}");
   }
   return text + "]}}}";
}

class KivProgram : public testing::Test {
 protected:
   Finished run(std::string const& script) const { return run_(script); }

   ProgramRun run_;
};

TEST_F(KivProgram, SaysHowItWentByExitStatusAndOneLine) {
   struct Case {
      char const* script;
      int status;
      char const* err;
   };
   ASSERT_EQ(run("$KIV load $DEMO --state $DIR/s; mkdir $DIR/d; echo '{' >$DIR/bad.json").status, 0);
   constexpr auto cases = std::to_array<Case>({
       {"$KIV --snapshot $DEMO show ip route", 0, ""},
       {"$KIV --state $DIR/s sh ipv6 ro vrf red", 0, ""},
       {"KIV_STATE=$DIR/s $KIV 'sh ip ro | json'", 0, ""},
       {"$KIV --help", 0, ""},
       {"$KIV help", 0, ""},
       {"$KIV sh ip '?'", 0, ""},
       {"$KIV --state $DIR/s show ip route vrf nosuch", 1, "kiv: \"nosuch\": show ip route: no such VRF\n"},
       {"$KIV --state /nonexistent show ip route", 1, "kiv: /nonexistent: no such state directory\n"},
       {"$KIV --snapshot /nonexistent show ip route", 1, "kiv: /nonexistent: No such file or directory\n"},
       {"$KIV --snapshot / show ip route", 1, "kiv: /: Is a directory\n"},
       {"cd $DIR; $KIV load bad.json --state d", 1,
        "kiv: bad.json: line 2, column 1: The JSON document has an improper structure: missing or superfluous commas, "
        "braces, missing keys, etc.\n"},
       {"cd $DIR; $KIV load bad.json --state nowhere/at/all; ls", 0, nullptr},
       {"cd $DIR; touch d/x; $KIV load $DEMO --state d", 1, "kiv: d: is there and is no state directory\n"},
       {"$KIV load $DEMO", 2, "kiv: load: command line: --state DIR should say where to\n"},
       {"$KIV", 2, "kiv: command line: at its end: show, load or help should follow\n"},
       {"$KIV show i route", 2, "kiv: \"i\": word 2 of \"show i route\": ambiguous, could be ip or ipv6\n"},
       {"$KIV show 'a\nb'", 2, "kiv: \"a\": word 2 of \"show a b\": not known here, expected ip or ipv6\n"},
       {"$KIV -- $'sh\\x01ow'", 2,
        "kiv: \"sh?ow\": word 1 of \"sh?ow\": not known here, expected show, load or help\n"},
       {"$KIV nosuch '?'", 2, "kiv: \"nosuch\": word 1 of \"nosuch\": not known here, expected show, load or help\n"},
       {"$KIV --state $DIR/s show ip route >/dev/full", 4, "kiv: standard output: No space left on device\n"},
       {"$KIV --state $DIR/s show ip route --json >/dev/full", 4, "kiv: standard output: No space left on device\n"},
       {"$KIV help >/dev/full", 4, "kiv: standard output: No space left on device\n"},
       {"$KIV --state $DIR/s show ip route >&-", 4, "kiv: standard output: Bad file descriptor\n"},
       {"echo nonsense >$DIR/s/fib/forwarding; $KIV --state $DIR/s show ip route", 3, nullptr},
   });
   for (Case const& c : cases) {
      Finished const finished = run(c.script);
      EXPECT_EQ(finished.status, c.status) << c.script << finished.err;
      if (c.err != nullptr) {
         EXPECT_EQ(finished.err, c.err) << c.script;
      } else {
         EXPECT_EQ(std::ranges::count(finished.err, '\n'), 1) << c.script << finished.err;
      }
   }
}

TEST_F(KivProgram, PrintsTheExamplesAsItDid) {
   struct Case {
      char const* snapshot;
      char const* command;
      char const* golden;
   };
   constexpr char const* longer =
       "show ip route 198.51.100.0/24 longer-prefixes bgp nexthop 192.0.2.5 matching-vias-only";
   constexpr auto cases = std::to_array<Case>({
       {"DEMO", "show ip route", "demo.ip.txt"},
       {"DEMO", "show ip route | json", "demo.ip.json"},
       {"DEMO", "show ipv6 route", "demo.ipv6.txt"},
       {"DEMO", "show ipv6 route | json", "demo.ipv6.json"},
       {"DEMO", "show ip route vrf red", "demo.ip.red.txt"},
       {"DEMO", "show ip route vrf red | json", "demo.ip.red.json"},
       {"DEMO", "show ipv6 route vrf mgmt", "demo.ipv6.mgmt.txt"},
       {"ROUTES", "show ip route vrf all dhcp", "routes.ip.all.dhcp.txt"},
       {"ROUTES", "show ip route vrf all dhcp | json", "routes.ip.all.dhcp.json"},
       {"ROUTES", longer, "routes.ip.longer.txt"},
       {"ROUTES", "show ipv6 route nexthop-group taps", "routes.ipv6.taps.txt"},
   });
   ASSERT_EQ(run("$KIV load $DEMO --state $DIR/DEMO; $KIV load $ROUTES --state $DIR/ROUTES").status, 0);
   for (Case const& c : cases) {
      std::string const golden = fileText(std::string(KIV_SOURCE_DIR "/tests/programs/golden/") + c.golden);
      std::string const command = std::string(" '") + c.command + "'";
      EXPECT_EQ(run("$KIV --snapshot $" + std::string(c.snapshot) + command).out, golden);
      EXPECT_EQ(run("$KIV --state $DIR/" + std::string(c.snapshot) + command).out, golden);
      if (golden.starts_with('{')) {
         EXPECT_TRUE(StrictJson::parse(golden)) << c.golden;
      }
   }
}

// Names are the user's; whatever is in them, the document stays one.
TEST_F(KivProgram, WritesOneStrictDocumentWhateverNamesHold) {
   std::ofstream(run_.dir() / "odd.json") << R"({"interfaces": {"e\"1": {"description": "a\\b\"\n\u0001\u2028é\u007f",
      "ipv4": ["10.0.0.1/24"]}}, "vrfs": {"\"\\{}[],:\u0007": {"id": 3}, "default": {"ipv4Routes": [
      {"prefix": "10.0.0.0/24", "type": "connected", "vias": [{"interface": "e\"1"}]}]}}})";
   Finished const finished = run("$KIV --snapshot $DIR/odd.json show ip route --json");
   EXPECT_EQ(finished.status, 0) << finished.err;
   auto const document = StrictJson::parse(finished.out);
   ASSERT_TRUE(document) << finished.out;
   auto const* const vrfs = document->find("vrfs");
   ASSERT_NE(vrfs, nullptr);
   ASSERT_NE(vrfs->find("default"), nullptr);
   Finished const other = run("$KIV --snapshot $DIR/odd.json --json show ip route vrf $'\"\\\\{}[],:\\x07'");
   EXPECT_EQ(other.status, 0) << other.err;
   EXPECT_TRUE(StrictJson::parse(other.out)) << other.out;
}

// A value that no route can have, met in the tables: the command ends, with the reason.
TEST_F(KivProgram, EndsWithTheReasonWhenATableHoldsWhatCannotBe) {
   std::ofstream(run_.dir() / "odd.json") << R"({"interfaces": {"e1": {}}, "vrfs": {"default": {"ipv4Routes": [
      {"prefix": "10.0.0.0/24", "type": "kernel", "vias": [{"interface": "e1", "nexthop": "10.0.0.1", "weight": 0}]}]}}})";
   Finished const finished = run("$KIV --snapshot $DIR/odd.json show ip route");
   EXPECT_EQ(finished.status, 3);
   EXPECT_EQ(finished.err,
             "kiv: shared tables: value out of range: Vault::Fib::Via::weight < minWeight() not allowed\n");
}

TEST_F(KivProgram, EndsQuietlyWhenItsReaderGoesAway) {
   std::ofstream(run_.dir() / "big.json") << bigSnapshot();
   ASSERT_EQ(run("$KIV load $DIR/big.json --state $DIR/s").status, 0);
   for (char const* const format : {"", " --json"}) {
      Finished const finished =
          run(std::string("{ $KIV --state $DIR/s show ip route") + format + "; echo $? >$DIR/status; } | head -c 1");
      EXPECT_EQ(finished.err, "");
      EXPECT_EQ(fileText(run_.dir() / "status"), "4\n");
   }
}

TEST_F(KivProgram, StopsWhenInterrupted) {
   std::ofstream(run_.dir() / "big.json") << bigSnapshot();
   ASSERT_EQ(run("$KIV load $DIR/big.json --state $DIR/s").status, 0);
   // Its reader takes one line and waits, so that it is in the middle of its output, most likely waiting for its
   // reader.
   Finished const finished = run(R"(mkfifo $DIR/pipe
$KIV --state $DIR/s show ip route >$DIR/pipe & pid=$!
exec 3<$DIR/pipe
read -r -u 3 line && read -r -u 3 line
kill -INT $pid
cat <&3 >$DIR/rest
wait $pid)");
   EXPECT_EQ(finished.status, 130) << finished.err;
   EXPECT_EQ(finished.err, "");
   std::string const rest = fileText(run_.dir() / "rest");
   EXPECT_LT(rest.size(), 1000000U);
   EXPECT_EQ(rest.find("10.79.249.0/24"), std::string::npos);
}

TEST_F(KivProgram, LeavesNothingInMemoryBehind) {
   constexpr char const* list = "ls -d /dev/shm/kiv.* ${TMPDIR:-/tmp}/kiv.?????? 2>/dev/null | sort";
   std::string const before = run(list).out;
   run("$KIV --snapshot $DEMO show ip route; $KIV --snapshot $DEMO show ip route vrf nosuch");
   EXPECT_EQ(run(list).out, before);
}

// Another implementation of JSON Schema agrees with the reader about the examples.
TEST_F(KivProgram, ExamplesFollowTheSchema) {
   if (run("python3 -c 'import jsonschema' || /usr/bin/python3 -c 'import jsonschema'").status != 0) {
      GTEST_SKIP() << "python3-jsonschema is not here";
   }
   std::ofstream(run_.dir() / "check.py") << R"(import glob, json, sys, jsonschema
root = sys.argv[1]
schema = json.load(open(root + '/docs/snapshot.schema.json'))
validator = jsonschema.Draft202012Validator(schema)
validator.check_schema(schema)
for name in glob.glob(root + '/examples/*.json'):
    for error in validator.iter_errors(json.load(open(name))):
        print(name, list(error.path), error.message))";
   Finished const finished =
       run("python=python3; $python -c 'import jsonschema' 2>/dev/null || python=/usr/bin/python3\n"
           "$python $DIR/check.py '" KIV_SOURCE_DIR "'");
   EXPECT_EQ(finished.status, 0) << finished.err;
   EXPECT_EQ(finished.out, "");
}

}  // namespace
