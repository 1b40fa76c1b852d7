#include "Hive/EntityManager.h"
#include "Kiv/nexthopgroup/NexthopGroupDetailHelper.h"
#include "Kiv/nexthopgroup/NexthopGroupMappingHelper.h"
#include "Kiv/nexthopgroup/NexthopGroupSummaryHelper.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include <fcntl.h>
#include <unistd.h>

// What the displays of nexthop groups cost on a box with ten thousand groups of four entries, each with a counter.
namespace {

using Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTableWriter;
using Routing::NexthopGroup::NexthopGroupType;

constexpr U32 groups = 10'000;
constexpr U32 entries = 4;

// The tables of the box; their files are gone before the benchmark starts.
class Box {
 public:
   Box() {
      auto const place = std::filesystem::exists("/dev/shm") ? std::filesystem::path("/dev/shm")
                                                             : std::filesystem::temp_directory_path();
      auto const dir = place / ("nexthopGroupBench" + std::to_string(::getpid()));
      Hive::EntityManager::stateDirIs(dir);
      auto const manager = Zam::makePtr<Hive::EntityManager>(dir);
      fill(*manager);
      entryStatus = manager->mount<NexthopGroup::EntryStatus>(NexthopGroup::entryStatusPath);
      counters->mountCounterVaults(manager);
      std::filesystem::remove_all(dir);
   }

   Zam::Ptr<Routing::NexthopGroup::Config> const config = Zam::makePtr<Routing::NexthopGroup::Config>();
   Zam::Ptr<Routing::Hardware::NexthopGroupStatus> const hardware =
       Zam::makePtr<Routing::Hardware::NexthopGroupStatus>();
   Zam::Ptr<Kiv::NexthopGroupCounterHelper> const counters = Kiv::nexthopGroupCounterHelperFactory();
   Zam::Ptr<NexthopGroup::EntryStatus const> entryStatus;
   U32 const fd = static_cast<U32>(::open("/dev/null", O_WRONLY | O_CLOEXEC));

 private:
   void fill(Hive::EntityManager const& manager) {
      using namespace FlexCounters;
      auto const ids = manager.create<NexthopGroup::EntryStatusWriter>(NexthopGroup::entryStatusPath, groups);
      auto const keys = manager.create<NexthopGroupEntryToCounterKeyTableWriter>(
          Routing::NexthopGroup::counterKeyTablePath, groups * entries);
      auto const current =
          manager.create<CounterTableWriter>(counterTablePath(FeatureId::nexthopGroup, allUnits), groups * entries);
      auto const vrf = hardware->vrfStatusIs("default");
      for (U32 id = 1; id <= groups; ++id) {
         auto const group = Zam::makePtr<Routing::NexthopGroup::NexthopGroupConfigEntry>(
             "customer-" + std::to_string(id), static_cast<NexthopGroupType>(id % 8));
         for (U32 index = 0; index < entries; ++index) {
            group->entryIs(index, {{}, Lumen::IpAddr(id << 8U | index), Lumen::IntfId::named("Ethernet1")});
            keys->counterKeyInfoIs(id, index, {id * entries + index, {{}, 1}});
            current->counterIs(id * entries + index, {id, id * 100ULL});
         }
         config->nexthopGroupIs(group);
         ids->nexthopGroupIdIs(group->name(), id);
         vrf->programmedIs(id, {0, 1, 2, 3});
      }
   }
};

Box const& box() {
   static Box const filled;
   return filled;
}

void summary(benchmark::State& state) {
   for (auto _ : state) {
      Kiv::NexthopGroupSummaryHelper display{{}, box().config, box().entryStatus, box().hardware};
      display.processNexthopGroups();
      benchmark::DoNotOptimize(display.render(box().fd, static_cast<U32>(state.range(0))));
   }
}
BENCHMARK(summary)->ArgName("format")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void mapping(benchmark::State& state) {
   for (auto _ : state) {
      Kiv::NexthopGroupMappingHelper display{{}, box().config, box().entryStatus};
      benchmark::DoNotOptimize(display.render(box().fd, static_cast<U32>(state.range(0))));
   }
}
BENCHMARK(mapping)->ArgName("format")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void detail(benchmark::State& state) {
   for (auto _ : state) {
      Kiv::NexthopGroupDetailHelper const display{{},      box().config,  box().entryStatus, box().hardware,
                                                  nullptr, box().counters};
      benchmark::DoNotOptimize(display.render(box().fd, static_cast<U32>(state.range(0))));
   }
}
BENCHMARK(detail)->ArgName("format")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

}  // namespace
