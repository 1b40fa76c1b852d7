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

// Writes a snapshot's static routes of any kind, as no command would: by their attributes, whose grammar is a table of
// cases. A rule is one of its lines with a rule in the place of each <name>; # is a number that is another one each
// time.
class RandomConfiguration {
 public:
   explicit RandomConfiguration(U32 seed) : random_(seed) {
      for (auto const& [name, text] : casesOf("configuration: static routes of any kind")) {
         rules_.emplace(name, text);
      }
   }

   std::string snapshot() {
      std::string vrfs;
      for (auto const& [name, id, other] : {std::tuple("default", 0, "red"), {"red", 1, "blue"}, {"blue", 2, "red"}}) {
         rules_.erase("other VRF");
         rules_.emplace("other VRF", other);
         std::string routes;
         for (number_ = 0; number_ < 30; ++number_) {
            routes.append(routes.empty() ? "" : ",\n").append(expanded(number_ % 2 == 0 ? "IPv4 pair" : "IPv6 pair"));
         }
         vrfs.append(vrfs.empty() ? "\"" : ", \"").append(name).append("\": {\"id\": " + std::to_string(id));
         vrfs.append(", \"staticRoutes\": [" + routes + "]}");
      }
      return R"({"maxViasIpv4": 4, "maxViasIpv6": 4, "vrfs": {)" + vrfs + "}}";
   }

 private:
   std::string expanded(std::string const& rule) {
      if (rule == "number of the pair" || rule == "#") {
         return std::to_string(rule == "#" ? 1 + unique_++ % 250 : number_);
      }
      auto at = rules_.lower_bound(rule);
      std::advance(at, random_.below(static_cast<U32>(rules_.count(rule))));
      std::string text = at->second;
      for (std::size_t begin = 0; (begin = text.find('<')) != std::string::npos;) {
         auto const end = text.find('>', begin);
         text.replace(begin, end + 1 - begin, expanded(text.substr(begin + 1, end - begin - 1)));
      }
      return text;
   }

   Random random_;
   std::multimap<std::string, std::string> rules_;
   U32 number_ = 0;
   U32 unique_ = 0;
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
   std::istringstream words(casesOf("configuration: words thrown together").front().first);
   std::vector<std::string> vocabulary{std::istream_iterator<std::string>(words), {}};
   vocabulary.insert(vocabulary.end(), {"", "a\xff", "e\x01"});
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
