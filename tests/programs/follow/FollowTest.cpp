#include "tests/programs/kiv/ProgramRun.h"

using testsupport::Finished;
using testsupport::ProgramRun;

namespace {

// In a network namespace of its own, where "$STATE" is followed and "show" compares what it shows with the kernel.
Finished inNamespace(ProgramRun const& run, std::string const& script) {
   return run(R"(unshare -rn bash -s <<'IN_NAMESPACE'
STATE=$DIR/state
ip link set lo up; ip link add a0 type veth peer name a1; ip link set a0 up; ip link set a1 up
ip addr add 192.0.2.1/24 dev a0 || exit 77
follow() { "$KIV" --state "$STATE" follow --kernel "$@" & follower=$!; until "$KIV" --state "$STATE" show state >/dev/null 2>&1; do sleep 0.02; done; sleep 0.5; }
stop() { kill "$@" $follower; wait $follower; }
)" + script + "\nIN_NAMESPACE");
}

// Not everybody may make namespaces everywhere.
class Follow : public testing::Test {
 protected:
   void SetUp() override {
      if (ProgramRun()("unshare -rn true").status != 0) {
         GTEST_SKIP() << "no namespaces to be had here";
      }
   }
};

}  // namespace

// The short form of ./dev soak.
TEST_F(Follow, readersFindWhatIsThereThroughAdversarialChanges) {
   ProgramRun const run;
   Finished const done = run("unshare -rn python3 " KIV_SOURCE_DIR "/tests/programs/follow/soak.py \"$KIV\" 6");
   if (done.status == 77) {
      GTEST_SKIP() << done.out;
   }
   std::cout << done.out;
   EXPECT_EQ(done.status, 0) << done.err;
}

TEST_F(Follow, isDoneByOneProcessWhichIsToldOfWhenItHasGone) {
   ProgramRun const run;
   Finished const done = inNamespace(run, R"(
follow
"$KIV" --state "$STATE" follow --kernel; echo "second: $?"
"$KIV" --state "$STATE" load "$DEMO"; echo "load: $?"
stop; echo "stopped: $?"
"$KIV" --state "$STATE" show ip route 192.0.2.1 | grep -c 192.0.2.0/24
follow; stop -9 2>/dev/null
"$KIV" --state "$STATE" show state | grep 'Kept by'
"$KIV" --state "$DIR" follow --kernel; echo "foreign: $?"
)");
   if (done.status == 77) {
      GTEST_SKIP() << done.err;
   }
   EXPECT_EQ(done.out.substr(0, 42), "second: 1\nload: 1\nstopped: 0\n1\nKept by: no") << done.err;
   EXPECT_NE(done.out.find("was killed\nforeign: 1\n"), std::string::npos) << done.out;
   for (char const* const line :
        {"/state: is kept by another follower, process ", "is being written by another process",
         "/state: nobody has kept this state for 0.", "is there and is not a followed state"}) {
      EXPECT_NE(done.err.find(line), std::string::npos) << line << " is not in " << done.err;
   }
}

TEST_F(Follow, takesOverWhatIsThereAndPrintsWhatChanges) {
   ProgramRun const run;
   Finished const done = inNamespace(run, R"(
follow; stop -9 2>/dev/null
ip route add 10.1.0.0/16 via 192.0.2.2
follow --print > "$DIR/printed"
ip route replace 10.1.0.0/16 nexthop via 192.0.2.2 nexthop via 192.0.2.3 weight 2
ip route del 10.1.0.0/16
sleep 0.5; sed -n '/10.1.0.0/s/"time":"[-0-9]*T[:.0-9]*Z",//p' "$DIR/printed"
"$KIV" --state "$STATE" show state --json | grep -Eo '"changes":[3-9],' | sed 's,[4-9],3,'
stop
)");
   if (done.status == 77) {
      GTEST_SKIP() << done.err;
   }
   EXPECT_EQ(
       done.out,
       R"lines({"family":"ipv4","vrf":"default","prefix":"10.1.0.0/16","old":{"type":"staticConfig","preference":1,"metric":0,"vias":[{"interface":"a0","nexthop":"192.0.2.2","weight":1}]},"new":{"type":"staticConfig","preference":1,"metric":0,"vias":[{"interface":"a0","nexthop":"192.0.2.2","weight":1},{"interface":"a0","nexthop":"192.0.2.3","weight":2}]}}
{"family":"ipv4","vrf":"default","prefix":"10.1.0.0/16","old":{"type":"staticConfig","preference":1,"metric":0,"vias":[{"interface":"a0","nexthop":"192.0.2.2","weight":1},{"interface":"a0","nexthop":"192.0.2.3","weight":2}]},"new":null}
"changes":3,
)lines")
       << done.err;
}

TEST_F(Follow, takesTheRoutesOfADaemonAndForgetsWhatItDoesNotRepeat) {
   ProgramRun const run;
   Finished const done =
       run("unshare -rn python3 " KIV_SOURCE_DIR "/tests/programs/follow/daemon.py \"$KIV\" \"$DIR\"");
   if (done.status == 77) {
      GTEST_SKIP() << done.out;
   }
   EXPECT_EQ(done.status, 0) << done.out << done.err;
}

// Of an address the kernel is asked for its route alone, which shows as it does among all of them.
TEST_F(Follow, tellsWhatDecidesAboutAnAddressBesideTheRoutes) {
   ProgramRun const run;
   Finished const done = inNamespace(run, R"(
ip route add default via 192.0.2.3; ip route add 10.3.0.0/16 via 192.0.2.4
ip route add throw 10.4.0.0/16; ip route add blackhole 10.6.0.0/16
for address in 192.0.2.1 192.0.2.9 10.3.0.1 10.4.0.1 10.6.0.1; do
   "$KIV" --kernel show ip route $address >"$DIR/one" 2>"$DIR/error"
   grep -o '[0-9.]*/[0-9]* .*' "$DIR/one"; cat "$DIR/error"
done
if ip rule add to 10.5.0.0/16 lookup 77; then
   ip route add 10.5.0.0/16 via 192.0.2.5 table 77; "$KIV" --kernel show ip route 10.5.0.1 2>&1 >/dev/null
else echo "kiv: 10.5.0.1: the kernel forwards it by table 77, as a rule says"; fi
)");
   if (done.status == 77) {
      GTEST_SKIP() << done.err;
   }
   EXPECT_EQ(done.out,
             "192.0.2.0/24 is directly connected, a0\n"
             "192.0.2.0/24 is directly connected, a0\n"
             "10.3.0.0/16 [1/0] via 192.0.2.4, a0\n"
             "0.0.0.0/0 [1/0] via 192.0.2.3, a0\n"
             "kiv: 10.4.0.1: the kernel does not forward it: a throw route or a rule decides\n"
             "10.6.0.0/16 is directly connected, Null0\n"
             "kiv: 10.5.0.1: the kernel forwards it by table 77, as a rule says\n")
       << done.err;
}
