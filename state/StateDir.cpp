#include "state/StateDir.h"

#include "NexthopGroup/EntryStatus.h"
#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/RouteStatus.h"
#include "Vault/UnprogrammedRouteStatus.h"
#include "cliprint/Interrupt.h"
#include "state/ConfigFile.h"
#include "state/text/Documents.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>

namespace state {
namespace {

namespace fs = std::filesystem;

// Some room to grow, for a daemon that goes on with the table; it costs nothing until it is used.
U32 capacityFor(std::size_t records) {
   return static_cast<U32>(records + records / 8 + 64);
}

template <class Fecs>
U64 bytesOf(Fecs const& fecs) {
   U64 vias = 0;
   for (auto const& fec : fecs) {
      vias += fec.vias.size();
   }
   return fecs.size() * 64 + vias * 128;
}

// A little more than what the tables take up.
U64 bytesOf(State const& state) {
   U64 bytes = bytesOf(state.fecs) + bytesOf(state.fecs6) + bytesOf(state.fecsGen) + bytesOf(state.policyFecs);
   for (VrfState const& vrf : state.vrfs) {
      bytes += vrf.routes.size() * 64 + vrf.routes6.size() * 80;
      bytes += (vrf.hardwareUnprogrammed.size() + vrf.kernelUnprogrammed.size()) * 64;
   }
   bytes += state.nexthopGroups.size() * 192 + state.nexthopGroupCounters.size() * 160;
   return bytes + (state.vrfs.size() * 2 + 10) * 16384;
}

// Tables are written through mappings, where a full file system has no way to say so.
void checkSpace(State const& state, std::string const& dir) {
   struct statvfs info {};
   if (::statvfs(dir.c_str(), &info) == 0 && U64{info.f_bavail} * info.f_frsize < bytesOf(state)) {
      throw Hive::StateError(dir + ": " + std::strerror(ENOSPC));
   }
}

template <class Writer, class Fecs>
void writeFecs(Hive::EntityManager const& manager, std::string_view path, Fecs const& fecs) {
   auto const writer = manager.create<Writer>(path, capacityFor(fecs.size()));
   for (auto const& fec : fecs) {
      writer->fecIs(fec);
   }
}

template <class Writer, class Routes>
void writeRoutes(Hive::EntityManager const& manager, std::string const& path, Routes const& routes) {
   auto const writer = manager.create<Writer>(path, capacityFor(routes.size()));
   for (auto const& route : routes) {
      writer->routeIs(route);
   }
}

// Routes of all VRFs, and a row of counts for each.
template <class Writer, class Put>
void writeUnprogrammed(Hive::EntityManager const& manager, std::string_view path, State const& state,
                       std::vector<UnprogrammedRoute> VrfState::*routes, Put&& put) {
   std::size_t rows = state.vrfs.size();
   for (VrfState const& vrf : state.vrfs) {
      rows += (vrf.*routes).size();
   }
   auto const writer = manager.create<Writer>(path, capacityFor(rows));
   for (VrfState const& vrf : state.vrfs) {
      for (UnprogrammedRoute const& route : vrf.*routes) {
         put(*writer, vrf.id, route);
      }
   }
}

// Counters are numbered as they are listed.
void writeCounters(State const& state, Hive::EntityManager const& manager) {
   using FlexCounters::CounterTableWriter;
   constexpr auto feature = FlexCounters::FeatureId::nexthopGroup;
   auto const& counters = state.nexthopGroupCounters;
   U32 const capacity = capacityFor(counters.size());
   auto const keys = manager.create<Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTableWriter>(
       Routing::NexthopGroup::counterKeyTablePath, capacity);
   auto const current =
       manager.create<CounterTableWriter>(FlexCounters::counterTablePath(feature, FlexCounters::allUnits), capacity);
   auto const cleared =
       manager.create<CounterTableWriter>(FlexCounters::snapshotTablePath(feature, FlexCounters::allUnits), capacity);
   for (U64 i = 0; i < counters.size(); ++i) {
      keys->counterKeyInfoIs(counters[i].groupId, counters[i].entry, {i, {{}, counters[i].chips}});
      current->counterIs(i, counters[i].current);
      if (counters[i].cleared) {
         cleared->counterIs(i, *counters[i].cleared);
      }
   }
}

void writeNexthopGroups(State const& state, Hive::EntityManager const& manager) {
   auto const ids = manager.create<::NexthopGroup::EntryStatusWriter>(::NexthopGroup::entryStatusPath,
                                                                      capacityFor(state.nexthopGroups.size()));
   for (NexthopGroup const& group : state.nexthopGroups) {
      if (group.id != 0) {
         ids->nexthopGroupIdIs(group.name, group.id);
      }
   }
   writeCounters(state, manager);
}

bool isReplaceable(fs::path const& dir) {
   std::error_code error;
   return fs::exists(dir / "hive.json", error) || fs::is_empty(dir, error);
}

[[noreturn]] void refuse(fs::path const& dir, std::string const& why) {
   throw Hive::StateError(dir.string() + ": " + why);
}

// The directory itself, whatever links and dots lead there.
fs::path resolved(std::string const& stateDir) {
   std::error_code error;
   fs::path const dir = fs::weakly_canonical(stateDir, error);
   if (error || stateDir.empty()) {
      refuse(stateDir, error ? error.message() : "is no directory name");
   }
   return dir.has_filename() ? dir : dir.parent_path();
}

// Under a name of its own beside its place; gone again unless placed.
class NewDir {
 public:
   explicit NewDir(fs::path place) : place_(std::move(place)), beside_(place_) {
      beside_ += ".new." + std::to_string(::getpid());
   }
   ~NewDir() {
      std::error_code ignored;
      fs::remove_all(beside_, ignored);
   }
   NewDir(NewDir const&) = delete;
   NewDir& operator=(NewDir const&) = delete;

   std::string beside() const { return beside_.string(); }
   // What was in the place before is then under the other name, and goes with this object.
   void putInPlace(bool replacing) const {
      unsigned const flags = replacing ? RENAME_EXCHANGE : RENAME_NOREPLACE;
      if (::renameat2(AT_FDCWD, beside_.c_str(), AT_FDCWD, place_.c_str(), flags) != 0) {
         refuse(place_, std::string("cannot be put in place: ") + std::strerror(errno));
      }
   }

 private:
   fs::path place_;
   fs::path beside_;
};

void writeText(fs::path const& file, std::string const& text) {
   if (!writeDurably(AT_FDCWD, file.c_str(), text, 0666)) {
      refuse(file, std::string("cannot be written: ") + std::strerror(errno));
   }
}

// What could not be read again is not written.
void checkReadable(std::string const& entities, std::string const& config) {
   State again = readEntities(JsonDocument::parse(std::string(entitiesFile), entities));
   readConfig(JsonDocument::parse(configFile, config), again);
}

}  // namespace

void writeTables(State const& state, Hive::EntityManager const& manager) {
   checkSpace(state, manager.stateDir());
   for (VrfState const& vrf : state.vrfs) {
      std::string const id = std::to_string(vrf.id);
      writeRoutes<Vault::Fib::RouteStatusWriter>(manager, "fib/route/" + id, vrf.routes);
      writeRoutes<Vault::Fib6::RouteStatusWriter>(manager, "fib6/route/" + id, vrf.routes6);
   }
   writeFecs<Vault::Fib::ForwardingStatusWriter>(manager, "fib/forwarding", state.fecs);
   writeFecs<Vault::Fib6::ForwardingStatusWriter>(manager, "fib6/forwarding", state.fecs6);
   writeFecs<Vault::Fib::ForwardingStatusWriter>(manager, "fib/policyForwarding", state.policyFecs);
   if (state.genericFib) {
      writeFecs<Vault::FibGen::ForwardingStatusWriter>(manager, "fibGen/forwarding", state.fecsGen);
   }
   writeNexthopGroups(state, manager);
   writeUnprogrammed<Vault::Fib::UnprogrammedRouteStatusWriter>(
       manager, "fib/unprogrammedRoute", state, &VrfState::hardwareUnprogrammed,
       [](auto& writer, VrfId vrfId, UnprogrammedRoute const& route) { writer.unprogrammedIs(vrfId, route.prefix); });
   writeUnprogrammed<Vault::KernelUnprogrammedRoute::UnprogrammedRouteWriter>(
       manager, "kernel/unprogrammedRoute", state, &VrfState::kernelUnprogrammed,
       [](auto& writer, VrfId vrfId, UnprogrammedRoute const& route) {
          writer.errorIs(vrfId, route.prefix, {route.error});
       });
}

void writeStateDir(State const& state, std::string const& stateDir) {
   fs::path const place = resolved(stateDir);
   if (fs::exists(place) && (!fs::is_directory(place) || !isReplaceable(place))) {
      refuse(stateDir, "is there and is no state directory");
   }
   std::string const entities = entitiesText(state);
   std::string const config = configText(state);
   checkReadable(entities, config);
   NewDir const fresh(place);
   Hive::EntityManager::stateDirIs(fresh.beside());
   writeTables(state, *Zam::makePtr<Hive::EntityManager>(fresh.beside()));
   writeText(fs::path(fresh.beside()) / entitiesFile, entities);
   writeText(fs::path(fresh.beside()) / configFile, config);
   std::optional<StateDirLock> lock;
   if (fs::exists(place)) {
      lock.emplace(place);
      if (!isReplaceable(place)) {
         refuse(stateDir, "is there and is no state directory");
      }
   }
   if (cliprint::interrupted()) {
      throw cliprint::SigIntException();
   }
   fresh.putInPlace(lock.has_value());
}

State readStateDir(std::string const& stateDir) {
   fs::path const dir(stateDir);
   while (true) {
      StateDirId const before(stateDir);
      try {
         State state = readEntities(JsonDocument::load((dir / entitiesFile).string()));
         if (fs::path const config = dir / configFile; fs::exists(config)) {
            readConfig(JsonDocument::load(config.string()), state);
         }
         if (before == StateDirId(stateDir)) {
            return state;
         }
      } catch (JsonError const&) {
         if (before == StateDirId(stateDir)) {
            throw;
         }
      }
      // Another state was loaded meanwhile: the files may be of either.
   }
}

PrivateStateDir::PrivateStateDir() {
   char const* const temporary = std::getenv("TMPDIR");
   for (std::string_view const parent :
        {std::string_view("/dev/shm"), std::string_view(temporary != nullptr ? temporary : "/tmp")}) {
      path_ = std::string(parent) + "/kiv.XXXXXX";
      if (::mkdtemp(path_.data()) != nullptr) {
         return;
      }
   }
   throw Hive::StateError(path_ + ": cannot be made: " + std::strerror(errno));
}

PrivateStateDir::~PrivateStateDir() {
   std::error_code ignored;
   fs::remove_all(path_, ignored);
}

}  // namespace state
