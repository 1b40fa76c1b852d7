#include "state/Snapshot.h"
#include "state/StateDir.h"
#include "support/Testing.h"

#include <simdjson.h>

// What is written reads back as what it was written from: the examples, what the other tests read, and thousands of
// random documents that are made from them.
namespace state {
namespace {

using Element = simdjson::dom::element;

std::string textOf(std::string const& file) {
   std::ifstream in(KIV_SOURCE_DIR "/" + file, std::ios::binary);
   return {std::istreambuf_iterator<char>(in), {}};
}

constexpr auto documents = std::to_array<char const*>(
    {"examples/demo.json", "examples/routes.json", "examples/static.json", "tests/state/odd.json",
     "tests/programs/kiv/box.json", "tests/programs/kiv/corners.json", "tests/programs/kiv/edges.json"});

// A document again, with members and elements left out and values in the place of others.
class Mutation {
 public:
   Mutation(std::string const& text, U32 seed) : random_(seed), root_(parser_.parse(text).value()) { collect(root_); }
   std::string text() { return mutated(root_); }

 private:
   bool chance(U32 in) { return random_() % in == 0; }

   template <class Items, class Visit>
   static void visit(Items const& items, Visit&& visit) {
      std::for_each(items.begin(), items.end(), visit);
   }

   void collect(Element value) {
      if (value.is_object()) {
         visit(value.get_object().value(), [&](auto member) { collect(member.value); });
      } else if (value.is_array()) {
         visit(value.get_array().value(), [&](auto item) { collect(item); });
      } else {
         (value.is_string() ? texts_ : others_).push_back(simdjson::minify(value));
      }
   }

   std::string mutated(Element value) {
      std::string out;
      auto const add = [&](std::string const& item) { out += (out.empty() ? "" : ",") + item; };
      if (value.is_object()) {
         visit(value.get_object().value(), [&](auto member) {
            if (!chance(40)) {
               add(jsonQuoted(member.key) + ":" + mutated(member.value));
            }
         });
         return "{" + out + "}";
      }
      if (value.is_array()) {
         visit(value.get_array().value(), [&](auto item) {
            if (!chance(20)) {
               add(mutated(item));
            }
         });
         return "[" + out + "]";
      }
      auto const& pool = value.is_string() ? texts_ : others_;
      return chance(60) ? pool[random_() % pool.size()] : simdjson::minify(value);
   }

   std::mt19937 random_;
   simdjson::dom::parser parser_;
   Element root_;
   std::vector<std::string> texts_;
   std::vector<std::string> others_;
};

// All that a state directory keeps beside its tables.
State withoutTables(State state) {
   state.fecs = {};
   state.fecs6 = {};
   state.fecsGen = {};
   state.policyFecs = {};
   state.nexthopGroupCounters = {};
   for (VrfState& vrf : state.vrfs) {
      vrf.routes = {};
      vrf.routes6 = {};
      vrf.hardwareUnprogrammed = {};
      vrf.kernelUnprogrammed = {};
   }
   return state;
}

TEST(RoundTrip, OfEveryDocument) {
   for (char const* const name : documents) {
      State const state = parseSnapshot(name, textOf(name));
      std::string const text = snapshotText(state);
      State const again = parseSnapshot(std::string(name) + " again", text);
      EXPECT_TRUE(again == state) << name;
      EXPECT_EQ(snapshotText(again), text);
      testsupport::TempDir const dir;
      writeStateDir(state, dir / "state");
      EXPECT_TRUE(readStateDir(dir / "state") == withoutTables(state)) << name;
   }
}

TEST(RoundTrip, OfRandomDocuments) {
   int accepted = 0;
   for (U32 seed = 0; seed < 600; ++seed) {
      std::string const text = Mutation(textOf(documents[seed % documents.size()]), seed).text();
      State state;
      try {
         state = parseSnapshot("random", text);
      } catch (JsonError const&) {
         continue;
      }
      ++accepted;
      ASSERT_TRUE(parseSnapshot("again", snapshotText(state)) == state) << seed << "\n" << text;
   }
   EXPECT_GT(accepted, 40);
}

TEST(RoundTrip, ReplacesBytesThatAreNoUtf8AndSaysWhatHasNoName) {
   State state;
   state.vrfs.emplace_back();
   state.interfaces.push_back({.intfId = Lumen::IntfId::named("e1"), .description = "a\xc3\x28\xffz\xe2\x82"});
   EXPECT_EQ(parseSnapshot("s", snapshotText(state)).interfaces[0].description,
             "a\xef\xbf\xbd(\xef\xbf\xbdz\xef\xbf\xbd\xef\xbf\xbd");
   state.interfaces[0].vrfId = 7;
   EXPECT_EQ(testsupport::complaintOf<Hive::StateError>([&] { snapshotText(state); }),
             "a snapshot has no name for VRF 7");
}

// The file is what programs outside read; this is where it comes from.
TEST(SnapshotSchema, IsTheOneInTheDocuments) {
   EXPECT_EQ(snapshotSchema(), textOf("docs/snapshot.schema.json"));
}

}  // namespace
}  // namespace state
