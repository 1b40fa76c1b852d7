#include "support/StrictJson.h"
#include "tests/Vault/VaultTesting.h"
#include "tests/programs/kiv/ProgramRun.h"

#include "FlexCounters/CounterTable.h"
#include "NexthopGroup/EntryStatus.h"

namespace {

using testsupport::Finished;
using testsupport::ProgramRun;
using testsupport::StrictJson;

// What the nexthop group commands do to a state directory, and what it does to them. How the groups look stands in the
// golden outputs.
class ShowNexthopGroup : public testing::Test {
 protected:
   ShowNexthopGroup() { EXPECT_EQ(run_("$KIV load $ROUTES --state $DIR/s").status, 0); }

   // "packets/bytes" of each entry of a group.
   std::string counts(std::string const& group) const {
      Finished const finished = run_("$KIV --state $DIR/s show nexthop-group " + group + " --json");
      auto const document = StrictJson::parse(finished.out);
      EXPECT_TRUE(document && finished.status == 0) << finished.err;
      std::string text;
      for (auto const& [index, entry] : document->find("nexthopGroups")->find(group)->find("entries")->members) {
         text += index + ":" + entry.find("packets")->text + '/' + entry.find("bytes")->text + ' ';
      }
      return text;
   }
   std::string file(std::string_view path) const { return run_.dir() / "" + "/s/" + std::string(path); }

   ProgramRun run_;
};

TEST_F(ShowNexthopGroup, ClearedCountersStartAgain) {
   using namespace FlexCounters;
   EXPECT_EQ(counts("web"), "0:18446744073709551615/18446744073709551615 1:0/0 15:18446744073709551615/0 ");
   CounterTable const before(file(snapshotTablePath(FeatureId::nexthopGroup, allUnits)));
   EXPECT_EQ(run_("$KIV --state $DIR/s clear nexthop-group counters").out, "");
   EXPECT_EQ(counts("web"), "0:0/0 1:0/0 15:0/0 ");
   EXPECT_EQ(counts("edge-gre"), "0:0/0 1:0/0 ");
   EXPECT_EQ(before.counter(2)->packets, 2000U) << "a display that is under way shows what it began with";
   CounterTableWriter writer(file(counterTablePath(FeatureId::nexthopGroup, allUnits)));
   writer.counterIs(0, {4, 400});
   EXPECT_EQ(counts("web"), "0:5/401 1:0/0 15:0/0 ");
}

TEST_F(ShowNexthopGroup, ClearsWhatWasNeverClearedAndLeavesWhatSomebodyElseWrites) {
   using namespace FlexCounters;
   auto const snapshot = file(snapshotTablePath(FeatureId::nexthopGroup, allUnits));
   std::filesystem::remove(snapshot);
   EXPECT_EQ(counts("edge-gre"), "0:12000/18000000 1:0/0 ");
   EXPECT_EQ(run_("$KIV --state $DIR/s clear nexthop-group counters").status, 0);
   EXPECT_EQ(counts("edge-gre"), "0:0/0 1:0/0 ");
   {
      CounterTableWriter const other(snapshot);
      Finished const finished = run_("$KIV --state $DIR/s clear nexthop-group counters");
      EXPECT_EQ(finished.err, "kiv: " + snapshot + ": has a writer already\n");
      EXPECT_EQ(finished.status, 3);
   }
   auto const counters = file(counterTablePath(FeatureId::nexthopGroup, allUnits));
   std::filesystem::rename(counters, counters + ".away");
   EXPECT_EQ(counts("edge-gre"), "0:18446744073709539616/18446744073691551616 1:0/0 ") << "what was cleared is ahead";
   EXPECT_EQ(run_("$KIV --state $DIR/s clear nexthop-group counters").status, 0);
   std::filesystem::rename(counters + ".away", counters);
   EXPECT_EQ(counts("edge-gre"), "0:12000/18000000 1:0/0 ") << "those that come begin at 0";
}

// Damage is shown around, told in one line, and is the exit status; a file that is no table ends the command.
TEST_F(ShowNexthopGroup, TellsOfDamage) {
   using NexthopGroup::EntryRecord;
   auto const ids = file(NexthopGroup::entryStatusPath);
   Vault::Testing::patch(ids,
                         Vault::Testing::slotOffset<EntryRecord>(ids, 0) + offsetof(Vault::Slot<EntryRecord>, words) +
                             offsetof(EntryRecord, id),
                         U32{0});
   for (char const* const what : {"", "mapping", "summary"}) {
      Finished const finished = run_(std::string("$KIV --state $DIR/s --json show nexthop-group ") + what);
      EXPECT_EQ(finished.err, "kiv: " + ids + ": damaged nexthop group, id 0\n");
      EXPECT_EQ(finished.status, 3);
      EXPECT_TRUE(StrictJson::parse(finished.out)) << finished.out;
      EXPECT_EQ(finished.out.find("UnprogrammedNexthopGroups") != std::string::npos,
                finished.out.find("\"numUnprogrammedNexthopGroups\":5,") != std::string::npos);
   }
   EXPECT_NE(run_("$KIV --state $DIR/s show nexthop-group mapping").out.find("              22 edge-gre\n"),
             std::string::npos);
   std::ofstream(file("tunnel/nexthop/counterkeyinfo")) << "no table";
   EXPECT_EQ(run_("$KIV --state $DIR/s show nexthop-group").status, 3);
   // Routes need the names of the groups, and no counters.
   EXPECT_EQ(run_("$KIV --state $DIR/s show ip route").err, "kiv: " + ids + ": damaged nexthop group, id 0\n");
}

}  // namespace
