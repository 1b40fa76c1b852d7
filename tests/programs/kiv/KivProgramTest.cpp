#include "support/StrictJson.h"
#include "tests/programs/kiv/ProgramRun.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

using testsupport::fileText;
using testsupport::Finished;
using testsupport::ProgramRun;
using testsupport::StrictJson;

// Writes $DIR/big.json: many routes with many distinct next hops, more than a pipe takes in.
constexpr char const* makeBig = R"(awk 'BEGIN {
   printf "{\"interfaces\": {\"e1\": {}}, \"vrfs\": {\"default\": {\"ipv4Routes\": ["
   for (i = 0; i < 20000; ++i)
      printf "%s{\"prefix\": \"10.%d.%d.0/24\", \"type\": \"eBgp\", \"vias\": [{\"interface\": \"e1\", " \
             "\"nexthop\": \"11.0.%d.%d\"}]}", i ? "," : "", i / 250, i % 250, i / 250, i % 250
   print "]}}}" }' >$DIR/big.json; )";

struct KivProgram : testing::Test {
   ProgramRun const run;
};

TEST_F(KivProgram, SaysHowItWentByExitStatusAndOneLine) {
   ASSERT_EQ(run("$KIV load $DEMO --state $DIR/s; mkdir $DIR/d; echo '{' >$DIR/bad.json").status, 0);
   for (auto const& [script, expected] : testsupport::casesOf("exit status and error")) {
      auto const [status, out, err] = run(script);
      std::string const said = expected.ends_with('*') ? " *" : err.empty() ? "" : ' ' + err.substr(0, err.size() - 1);
      EXPECT_EQ(std::to_string(status) + said, expected) << script << err;
      EXPECT_EQ(std::ranges::count(err, '\n'), said.empty() ? 0 : 1) << script << err;
   }
}

TEST_F(KivProgram, PrintsTheExamplesAsItDid) {
   ASSERT_EQ(run("for i in DEMO ROUTES STATIC CORNERS EDGES; do $KIV load ${!i} --state $DIR/$i; done").status, 0);
   for (auto const& [command, file] : testsupport::casesOf("output")) {
      std::string const golden = fileText(KIV_SOURCE_DIR "/tests/programs/golden/" + file);
      EXPECT_EQ(run("$KIV --snapshot $" + command).out, golden);
      EXPECT_EQ(run("$KIV --state $DIR/" + command).out, golden);
      EXPECT_TRUE(!golden.starts_with('{') || StrictJson::parse(golden)) << file;
   }
}

// Names are the user's; whatever is in them, the document stays one.
TEST_F(KivProgram, WritesOneStrictDocumentWhateverNamesHold) {
   std::ofstream(run.dir() / "odd.json") << R"({"interfaces": {"e\"1": {"description": "a\\b\"\n\u0001\u2028é\u007f",
      "ipv4": ["10.0.0.1/24"]}}, "vrfs": {"\"\\{}[],:\u0007": {"id": 3}, "default": {"ipv4Routes": [
      {"prefix": "10.0.0.0/24", "type": "connected", "vias": [{"interface": "e\"1"}]}]}}})";
   for (char const* const vrf : {"", R"( vrf $'"\\{}[],:\x07')"}) {
      Finished const finished = run(std::string("$KIV --snapshot $DIR/odd.json --json show ip route") + vrf);
      EXPECT_EQ(finished.status, 0) << finished.err;
      EXPECT_TRUE(StrictJson::parse(finished.out)) << finished.out;
   }
}

TEST_F(KivProgram, EndsQuietlyWhenItsReaderGoesAway) {
   ASSERT_EQ(run(std::string(makeBig) + "$KIV load $DIR/big.json --state $DIR/s").status, 0);
   for (char const* const format : {"", " --json"}) {
      Finished const finished =
          run(std::string("{ $KIV --state $DIR/s show ip route") + format + "; echo $? >$DIR/status; } | head -c 1");
      EXPECT_EQ(finished.err, "");
      EXPECT_EQ(fileText(run.dir() / "status"), "4\n");
   }
}

// Another implementation of JSON Schema agrees with the reader about the examples.
TEST_F(KivProgram, ExamplesFollowTheSchema) {
   Finished const finished = run("cd '" KIV_SOURCE_DIR R"('; for python in python3 /usr/bin/python3; do
   $python -c 'import jsonschema' && break; done 2>/dev/null || exit 77
set --; for example in examples/*.json; do set -- "$@" -i $example; done
$python -W ignore -m jsonschema "$@" docs/snapshot.schema.json)");
   if (finished.status == 77) {
      GTEST_SKIP() << "python3-jsonschema is not here";
   }
   EXPECT_EQ(finished.status, 0) << finished.err;
}

}  // namespace
