#include "programs/kernel/KernelState.h"
#include "state/Snapshot.h"
#include "tests/programs/kernel/RouteLines.h"

namespace kernelTest {

TEST(RecordedMachine, hasTheRoutesAndInterfacesThatIpShows) {
   for (char const* const name : {"up", "carrierdown", "linkdown"}) {
      kernel::Dumps dumps = recordedDumps(name);
      Lines const lines = allLines(kernel::stateFrom(kernel::Model(dumps)));
      EXPECT_GT(lines.size(), 150U);
      EXPECT_EQ(difference(lines, shownLines(dataOf(name))), Lines()) << name;
      // Without the next-hop objects, what the routes tell about themselves stands in.
      dumps.nextHops.clear();
      EXPECT_EQ(difference(allLines(kernel::stateFrom(kernel::Model(dumps))), lines), Lines()) << name;
   }
}

template <class Fec, class Hops>
void expectKept(std::vector<Fec> const& fecs, Hops& idsOf, int& kept) {
   for (Fec const& fec : fecs) {
      std::string text = std::to_string(fec.fecId.value() >> 56U);
      for (auto const& via : fec.vias) {
         text += " " + via.hop.stringValue() + " " + via.intfId.stringValue() + " " + std::to_string(via.weight.raw()) +
                 " " + std::to_string(via.label.raw()) + " " + std::to_string(via.tunnelId);
      }
      auto const [place, isNew] = idsOf.try_emplace(text, fec.fecId.value());
      EXPECT_EQ(place->second, fec.fecId.value()) << text;
      kept += isNew ? 0 : 1;
   }
}

// The same next hops, from reading to reading; and what is read anew has the ids of a first reading.
TEST(RecordedMachine, keepsItsIds) {
   kernel::ForwardingIds ids;
   int kept = 0;
   std::map<std::string, U64> before;
   for (char const* const name : {"up", "carrierdown", "linkdown", "up"}) {
      state::State const state = kernel::stateFrom(kernel::Model(recordedDumps(name)), ids);
      std::map<std::string, U64> idsOf = before;
      expectKept(state.fecs, idsOf, kept);
      expectKept(state.fecs6, idsOf, kept);
      before.clear();
      expectKept(state.fecs, before, kept);
      expectKept(state.fecs6, before, kept);
      EXPECT_TRUE(state::parseSnapshot(name, state::snapshotText(state)) == state) << name;
   }
   EXPECT_GT(kept, 30);
   EXPECT_TRUE(kernel::stateFrom(kernel::Model(recordedDumps("up"))) ==
               kernel::stateFrom(kernel::Model(recordedDumps("up"))));
}

TEST(StableIds, areCountedByUse) {
   kernel::StableIds<char> ids;
   auto const reading = [&](std::string_view values) {
      std::string text;
      for (char const value : values) {
         auto const [id, isFirst] = ids.use(value);
         text += std::to_string(id) + (isFirst ? "! " : " ");
      }
      ids.nextReading();
      return text;
   };
   EXPECT_EQ(reading("abab"), "1! 2! 1 2 ");
   EXPECT_EQ(reading("bc"), "2! 3! ");
   EXPECT_EQ(reading("cda"), "3! 1! 4! ") << "that of a is free, that of b is until this reading ends in use";
   EXPECT_EQ(reading("b"), "2! ");
}

}  // namespace kernelTest
