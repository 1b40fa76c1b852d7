#include "programs/command/Parser.h"
#include "programs/kiv/Commands.h"
#include "state/ConfigFile.h"
#include "state/Snapshot.h"
#include "state/StateDir.h"
#include "state/text/Documents.h"
#include "support/StrictJson.h"
#include "tests/Vault/VaultTesting.h"
#include "tests/programs/kiv/ProgramRun.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

// Static routes that go in, are refused, come out as commands and go in again.
namespace {

using testsupport::casesOf;
using testsupport::fileText;
using testsupport::Finished;
using testsupport::ProgramRun;
using Vault::Testing::OtherProcess;
using Vault::Testing::Random;

constexpr char const* emptyBox =
    R"({"vrfs": {"default": {}, "red": {"id": 1}, "blue": {"id": 2}}, "maxViasIpv4": 4, "maxViasIpv6": 4})";

// Writes a snapshot's static routes of any kind, as no command would: by their attributes.
class RandomConfiguration {
 public:
   explicit RandomConfiguration(U32 seed) : random_(seed) {}

   std::string snapshot() {
      std::string text = R"({"maxViasIpv4": 4, "maxViasIpv6": 4, "vrfs": {)";
      for (auto const& [name, id] : {std::pair("default", 0), std::pair("red", 1), std::pair("blue", 2)}) {
         text.append(id == 0 ? "\"" : ", \"").append(name).append("\": {\"id\": " + std::to_string(id));
         text.append(", \"staticRoutes\": [");
         vrf_ = name;
         for (U32 i = 0; i < 60; ++i) {
            text.append(i == 0 ? "" : ",\n").append(route(i));
         }
         text += "]}";
      }
      return text + "}}";
   }

 private:
   bool chance(U32 oneIn) { return random_.below(oneIn) == 0; }
   std::string number(U32 below) { return std::to_string(random_.below(below)); }
   template <std::size_t Size>
   char const* oneOf(std::array<char const*, Size> const& words) {
      return words[random_.below(Size)];
   }
   std::string maybe(char const* member, std::string const& value) {
      return chance(3) ? ", \"" + std::string(member) + "\": " + value : "";
   }
   std::string word() {
      return '"' +
             std::string(oneOf(std::to_array({"n", "name", "tag", "7", "a\\\"b", "\\u00e9!", "Null0", "vrf", "::1"}))) +
             '"';
   }
   std::string anyU32() { return chance(4) ? "4294967295" : number(1000); }
   // No route names its own VRF, nor the default one.
   std::string otherVrf() { return vrf_ == "red" ? "\"blue\"" : "\"red\""; }
   std::string interface() { return interfaceAt(random_.below(6)); }
   std::string interfaceAt(U32 at) {
      constexpr auto names = std::to_array({"Ethernet1", "Ethernet3/1/2", "lo", "e", "Vlan100", "n"});
      return '"' + std::string(names[at % names.size()]) + '"';
   }
   // Different ones for the vias of a route.
   std::string hop(bool isIp6, U32 at) {
      std::string const low = std::to_string(1 + at * 50 + random_.below(50));
      return '"' + std::string(isIp6 || chance(8) ? "2001:db8::" : "192.0.2.") + low + '"';
   }

   // Nothing that another via of the route could be, too.
   std::string via(bool isIp6, U32 at) {
      std::string text;
      switch (random_.below(5)) {
         case 0:
            text = "\"interface\": " + interfaceAt(at) + maybe("bfd", "true");
            break;
         case 1:
            text = "\"egressVrf\": " + otherVrf() + (at == 0 ? "" : ", \"nexthop\": " + hop(isIp6, at)) +
                   maybe("label", "0") + maybe("bfd", "true");
            break;
         case 2:
            text = "\"vtep\": " + hop(isIp6, at) + ", \"vni\": " + std::to_string(1 + random_.below(16777215)) +
                   ", \"routerMac\": \"00:1c:73:00:00:" + std::to_string(10 + random_.below(90)) + "\"" +
                   maybe("localInterface", interface()) + maybe("sourceVtepValidation", "true");
            isEvpn_ = true;
            break;
         default:
            text = "\"nexthop\": " + hop(isIp6, at) + maybe("interface", interface()) + maybe("label", "1048575") +
                   maybe("bfd", "true");
            break;
      }
      return '{' + text + maybe("metric", anyU32()) + maybe("name", word()) + '}';
   }

   std::string ofType(bool isIp6) {
      switch (random_.below(6)) {
         case 0:
            return R"("type": "drop")" + maybe("name", word()) + maybe("tag", anyU32());
         case 1:
            return R"("type": "nexthopGroup", "nexthopGroup": )" + word() + maybe("metric", anyU32()) +
                   maybe("tag", anyU32());
         case 2:
            return R"("type": "routeCacheConnected")";
         default:
            break;
      }
      isEvpn_ = false;
      std::string vias = via(isIp6, 0);
      for (U32 at = 1; at <= random_.below(4); ++at) {
         vias.append(", ").append(via(isIp6, at));
      }
      return "\"vias\": [" + vias + "]" + maybe("tag", anyU32()) + maybe("leakToVrf", otherVrf()) +
             (isEvpn_ ? maybe("ribBypass", "true") : "");
   }

   // Two of four have the prefix of another, with a preference of their own where their type has one.
   std::string route(U32 i) {
      bool const isIp6 = i % 2 == 1;
      std::string const type = ofType(isIp6);
      bool const isSecond = i % 4 >= 2 && type.find("routeCache") == std::string::npos;
      U32 const low = isSecond ? i - 2 : i;
      std::string const prefix = isIp6 ? "2001:db8:" + std::to_string(low) + "::/" + std::to_string(48 + low)
                                       : "10." + std::to_string(low) + ".0.0/" + std::to_string(16 + low / 4);
      return "{\"prefix\": \"" + prefix + "\", " + type +
             (isSecond ? ", \"preference\": " + std::to_string(2 + random_.below(254)) : "") + "}";
   }

   Random random_;
   std::string vrf_;
   bool isEvpn_ = false;
};

class Configuration : public testing::Test {
 protected:
   Configuration() {
      std::ofstream(run_.dir() / "empty.json") << emptyBox;
      EXPECT_EQ(run_("$KIV load $DIR/empty.json --state $DIR/s").status, 0);
   }
   std::string config(std::string const& state = "s") const { return fileText(run_.dir() / (state + "/config.json")); }
   std::string stateDir() const { return run_.dir() / "s"; }

   ProgramRun run_;
};

// What is shown as configuration, fed into an empty box, is the same configuration; and "no" before every line of it
// takes all of it away.
TEST_F(Configuration, IsWhatItsCommandsConfigure) {
   for (U32 seed = 0; seed < 20; ++seed) {
      std::ofstream(run_.dir() / "random.json") << RandomConfiguration(seed).snapshot();
      ASSERT_EQ(run_("$KIV load $DIR/random.json --state $DIR/a").err, "");
      for (char const* const all : {"", " all"}) {
         Finished const finished = run_(
             "set -e; $KIV load $DIR/empty.json --state $DIR/b; for i in ip ipv6; do "
             "$KIV --state $DIR/a show running-config $i route" +
             std::string(all) + "; done >$DIR/commands; $KIV --state $DIR/b configure $DIR/commands");
         ASSERT_EQ(finished.err, "") << seed;
         ASSERT_EQ(config("b"), config("a")) << seed << fileText(run_.dir() / "commands");
      }
      // Whatever the order.
      for (char const* const order : {"cat", "tac"}) {
         Finished const finished = run_(
             "$KIV load $DIR/random.json --state $DIR/b; for i in ip ipv6; do $KIV --state $DIR/b "
             "show running-config $i route; done | sed 's/^/no /' | " +
             std::string(order) + " >$DIR/none; $KIV --state $DIR/b configure $DIR/none");
         ASSERT_EQ(finished.err, "") << seed << fileText(run_.dir() / "none");
         ASSERT_EQ(config("b"), "{\"vrfs\":{}}\n") << seed;
      }
   }
}

// A command that is refused says why in one line, and what was configured stays as it was.
TEST_F(Configuration, StaysAsItIsWhenACommandIsRefused) {
   for (auto const& [command, nothing] : casesOf("configuration")) {
      ASSERT_EQ(run_("$KIV --state $DIR/s " + command).err, nothing) << command;
   }
   std::string const before = config();
   for (auto const& [command, refusal] : casesOf("configuration: refusals")) {
      Finished const finished = run_("KIV_STATE=$DIR/s $KIV " + command);
      EXPECT_EQ(std::to_string(finished.status) + ' ' + finished.err, refusal + '\n') << command;
      EXPECT_EQ(finished.out, "");
      ASSERT_EQ(config(), before) << command;
   }
}

TEST_F(Configuration, LosesWhatNoAndClearSay) {
   for (auto const& [command, nothing] : casesOf("configuration")) {
      ASSERT_EQ(run_("$KIV --state $DIR/s " + command).err, nothing) << command;
   }
   ASSERT_EQ(run_("cp -r $DIR/s $DIR/full").status, 0);
   for (auto const& [command, gone] : casesOf("configuration: what goes")) {
      Finished const finished =
          run_("rm -rf $DIR/s; cp -r $DIR/full $DIR/s; $KIV --state $DIR/s " + command +
               "; for i in full s; do for j in ip ipv6; do $KIV --state $DIR/$i show running-config "
               "$j route; done >$DIR/$i.txt; done; diff $DIR/full.txt $DIR/s.txt | sed -n 's/^[<>] "
               "/&/p' | tr '\\n' ';'");
      EXPECT_EQ(finished.out, gone) << command;
   }
}

TEST_F(Configuration, TakesAllCommandsOfAFileOrNone) {
   auto const configure = [&](std::string const& text) {
      std::ofstream(run_.dir() / "commands") << text;
      Finished const finished = run_("cd $DIR; $KIV --state s configure commands");
      return std::to_string(finished.status) + ' ' + finished.err;
   };
   EXPECT_EQ(configure("! a comment\n\n  ip route 10.0.0.0/8 Null0  \nip route 11.0.0.0/8 Null0"), "0 ");
   std::string const before = config();
   EXPECT_EQ(configure("ip route 12.0.0.0/8 Null0\nip route 10.0.0.0/8 192.0.2.1\n"),
             "1 kiv: commands: line 2: \"10.0.0.0/8\": ip route: Cannot ECMP to Null0 interface.\n");
   EXPECT_EQ(configure("ip route 12.0.0.0/8 Null0\n\nip route 13.0.0.0/8 5 5\n"),
             "2 kiv: commands: line 3: \"5\": word 5 of \"ip route 13.0.0.0/8 5 5\": PREFERENCE given twice\n");
   EXPECT_EQ(configure("show ip route\n"),
             "2 kiv: commands: line 1: \"show ip route\": is no command of the configuration\n");
   EXPECT_EQ(run_("$KIV --state $DIR/s configure $DIR").status, 1);
   EXPECT_EQ(config(), before);
}

TEST_F(Configuration, IsCheckedBeforeItIsTaken) {
   for (auto const& [question, answer] : casesOf("check")) {
      Finished const finished = run_("$KIV --snapshot $STATIC check " + question);
      EXPECT_EQ(std::to_string(finished.status) + ' ' + finished.out + finished.err, answer + '\n') << question;
      bool const isAcceptable = finished.status == 0;
      if (finished.status != 2) {
         Finished const json = run_("$KIV --snapshot $STATIC --json check " + question);
         EXPECT_EQ(json.status, finished.status);
         auto const document = testsupport::StrictJson::parse(json.out);
         ASSERT_TRUE(document) << json.out;
         EXPECT_EQ(document->find("acceptable")->text, isAcceptable ? "true" : "false");
         EXPECT_EQ(finished.err.empty(), isAcceptable);
         EXPECT_EQ(document->find("msg")->text.empty(), isAcceptable);
      }
   }
}

// A configuration that is cut off is not taken for a whole one.
TEST_F(Configuration, IsNotSilentlyCutOffByAnInterrupt) {
   Finished const finished = run_(
       R"(set -m; for i in {1..9}; do for j in {1..250}; do echo "ip route 10.$i.$j.0/24 192.0.2.1 name a-long-name-for-a-hop"
done; done >$DIR/commands; $KIV --state $DIR/s configure $DIR/commands && mkfifo $DIR/pipe
$KIV --state $DIR/s show running-config ip route >$DIR/pipe & pid=$!
exec 3<$DIR/pipe
read -r -u 3 line; sleep 0.1
kill -INT $pid; cat <&3 >$DIR/rest
wait $pid)");
   EXPECT_EQ(finished.status, 130) << finished.err;
}

template <class Condition>
bool comesTrue(Condition&& condition) {
   auto const start = std::chrono::steady_clock::now();
   while (!condition()) {
      if (!Vault::Testing::within(start, std::chrono::seconds(60))) {
         return false;
      }
      ::usleep(1000);
   }
   return true;
}

Routing::RouteKey dropKey(U32 number) {
   return {{}, Lumen::Prefix(Lumen::IpAddr(0x0a000000U + number * 256), 24), 1};
}

void addDropRoute(state::State& state, U32 number) {
   state.vrfs.front().staticRoutes.ip->routeIs(dropKey(number), Routing::RouteType::drop);
}

std::size_t dropRoutes(std::string const& stateDir) {
   return state::readStateDir(stateDir).vrfs.front().staticRoutes.ip->route().size();
}

// Killed between the write and the rename, it leaves the old configuration, and the next writer goes on from there.
TEST_F(Configuration, SurvivesAWriterThatIsKilledHalfway) {
   ASSERT_EQ(run_("$KIV --state $DIR/s ip route 192.0.2.0/24 Null0").status, 0);
   std::string const before = config();
   OtherProcess writer([&] {
      state::ConfigChange change(stateDir());
      addDropRoute(change.state(), 1);
      change.writeBeside();
      std::ofstream(run_.dir() / "halfway") << "now";
      ::pause();
   });
   EXPECT_TRUE(comesTrue([&] { return std::filesystem::exists(run_.dir() / "halfway"); }));
   EXPECT_TRUE(writer.stop());
   EXPECT_EQ(config(), before);
   ASSERT_EQ(run_("$KIV --state $DIR/s ip route 198.51.100.0/24 Null0").err, "");
   EXPECT_EQ(dropRoutes(stateDir()), 2U);
}

// Killed anywhere, again and again: every change is there as a whole or not at all, in its order.
TEST_F(Configuration, IsWholeWhereverItsWriterIsKilled) {
   Random random(11);
   std::size_t routes = 0;
   for (U32 round = 0; round < 30; ++round) {
      OtherProcess writer([&] {
         for (auto number = static_cast<U32>(routes);; ++number) {
            state::ConfigChange change(stateDir());
            addDropRoute(change.state(), number);
            change.commit();
         }
      });
      ::usleep(random.below(15000));
      writer.stop();
      auto const now = dropRoutes(stateDir());
      EXPECT_GE(now, routes);
      routes = now;
      auto const list = state::readStateDir(stateDir()).vrfs.front().staticRoutes.ip;
      for (U32 number = 0; number < routes; ++number) {
         ASSERT_NE(list->route(dropKey(number)), nullptr) << number;
      }
   }
   EXPECT_GT(routes, 30U);
}

// Two writers, and a third process that loads another state meanwhile: no change is lost but to that load.
TEST_F(Configuration, KeepsTheChangesOfTwoWriters) {
   constexpr U32 changes = 60;
   auto const work = [&](U32 first) {
      for (U32 number = first; number < first + changes; ++number) {
         state::ConfigChange change(stateDir());
         addDropRoute(change.state(), number);
         change.commit();
      }
      std::ofstream(run_.dir() / ("done" + std::to_string(first))) << "done";
      ::pause();
   };
   {
      OtherProcess one([&] { work(0); });
      OtherProcess two([&] { work(1000); });
      EXPECT_TRUE(comesTrue([&] {
         EXPECT_LE(dropRoutes(stateDir()), 2 * changes);  // readable all the while
         return std::filesystem::exists(run_.dir() / "done0") && std::filesystem::exists(run_.dir() / "done1000");
      }));
   }
   EXPECT_EQ(dropRoutes(stateDir()), 2 * changes);

   auto const snapshot = state::readSnapshot(run_.dir() / "empty.json");
   OtherProcess loader([&] {
      while (true) {
         state::writeStateDir(snapshot, stateDir());
      }
   });
   for (U32 number = 0; number < 50; ++number) {
      state::ConfigChange change(stateDir());
      addDropRoute(change.state(), number);
      change.commit();
      // As long as the change lasts, no other state takes the place.
      EXPECT_NE(state::readStateDir(stateDir()).vrfs.front().staticRoutes.ip->route(dropKey(number)), nullptr);
   }
   EXPECT_TRUE(loader.stop());
}

// Words thrown together: what is taken is a configuration that can be written and read again, and everything else is
// refused with a text of one line.
TEST(ConfigurationGrammar, WithstandsWordsThrownTogether) {
   std::istringstream words(
       "10.0.0.0/8 10.0.0.0/8 10.0.0.1/8 224.0.0.0/4 0.0.0.0/0 2001:db8::/32 ::/0 Null0 nexthop-group G cached "
       "egress-vrf red "
       "default Ethernet1 192.0.2.1 192.0.2.2 0.0.0.0 fe80::1 :: label 5 1048576 track bfd vtep 203.0.113.9 vni 7 "
       "router-mac-address 00:00:00:00:00:01 00:00:00:00:00:00 0:0 local-interface lo rib-bypass "
       "source-vtep-validation 200 "
       "tag 4294967295 4294967296 name n metric leak vrf red 99999999999999999999 FecId(0x1f) ? -- 10.0.0.0/33 a\xff "
       "e\x01 "
       "-1 null0 / : . 1.2.3.4/");
   std::vector<std::string> vocabulary{std::istream_iterator<std::string>(words), {}};
   vocabulary.emplace_back();
   std::array<std::vector<std::string>, 3> const starts{{{"ip", "route"}, {"ipv6", "route"}, {"no", "ip", "route"}}};
   auto state = state::parseSnapshot("box", emptyBox);
   Random random(23);
   U32 taken = 0;
   std::string saved = state::configText(state);
   for (U32 i = 0; i < 8'000; ++i) {
      std::vector<std::string> line = starts[random.below(starts.size())];
      line.push_back(vocabulary[random.below(7)]);
      for (U32 more = 1 + random.below(i % 4 + 1); more > 0; --more) {
         line.push_back(vocabulary[random.below(static_cast<U32>(vocabulary.size()))]);
      }
      try {
         kiv::parseCommand(kiv::commands(), line).configure(state);
         ++taken;
         saved = state::configText(state);
         auto again = state::parseSnapshot("box", emptyBox);
         state::readConfig(state::JsonDocument::parse("config", saved), again);
         ASSERT_EQ(state::configText(again), saved);
      } catch (kiv::UsageError const& error) {
         ASSERT_NE(std::string(error.what()), "");
      } catch (std::runtime_error const& error) {
         // It may leave the state in memory half-changed; that is then not written.
         ASSERT_NE(std::string(error.what()), "");
         state::readConfig(state::JsonDocument::parse("config", saved), state);
      }
   }
   EXPECT_GT(taken, 100U);
}

}  // namespace
