#include "state/LiveDir.h"

#include "state/ConfigFile.h"
#include "state/OneLoad.h"
#include "state/Refuse.h"
#include "state/StateDir.h"
#include "state/text/Documents.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace state {
namespace {

namespace fs = std::filesystem;

constexpr char const* stamp = "hive.json";
constexpr char const* laterStamp = ".hive.json.later";

int openedDir(std::string const& stateDir) {
   std::error_code error;
   fs::create_directories(stateDir, error);
   int const dir = ::open(stateDir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
   if (dir < 0) {
      refuse(stateDir, std::strerror(errno));
   }
   if (!fs::is_empty(stateDir, error) && ::faccessat(dir, LiveStatusFile::name, F_OK, 0) != 0) {
      ::close(dir);
      refuse(stateDir, "is there and is not a followed state");
   }
   return dir;
}

// Only the stamp makes it a state directory.
void renameStamp(std::string const& stateDir, char const* from, char const* to) {
   if (::rename((stateDir + "/" + from).c_str(), (stateDir + "/" + to).c_str()) != 0) {
      refuse(stateDir + "/" + to, std::strerror(errno));
   }
}

struct OpenDir {
   explicit OpenDir(std::string const& stateDir) : fd(openedDir(stateDir)) {}
   OpenDir(OpenDir const&) = delete;
   OpenDir& operator=(OpenDir const&) = delete;
   ~OpenDir() { ::close(fd); }
   int fd;
};

void eraseNonPersistent(Routing::RouteList& routes) {
   std::vector<Routing::RouteKey> keys;
   for (auto const& [key, route] : routes.route()) {
      if (route->nonPersistent()) {
         keys.push_back(key);
      }
   }
   std::ranges::for_each(keys, [&](Routing::RouteKey const& key) { routes.routeDel(key); });
}

void addNonPersistent(Routing::RouteList& routes, Routing::RouteList const& from) {
   for (auto const& [key, route] : from.route()) {
      if (routes.route(key) == nullptr) {
         routes.routeIs(key, route->routeType())->nonPersistentIs(true);
      }
   }
}

bool hasVrf(State const& state, VrfId id) {
   return std::ranges::find(state.vrfs, id, &VrfState::id) != state.vrfs.end();
}

}  // namespace

LiveDir::LiveDir(std::string stateDir, std::string_view source)
    : stateDir_(std::move(stateDir)),
      status_(OpenDir(stateDir_).fd, stateDir_) {
   LiveStatus& status = status_.value();
   status.pid = static_cast<U64>(::getpid());
   status.networkNamespace = networkNamespace();
   status.started = status.lastSeen = systemTime();
   std::ranges::copy_n(source.begin(), static_cast<std::ptrdiff_t>(std::min(source.size(), status.source.size() - 1)),
                       status.source.begin());
   if (fs::exists(stateDir_ + "/" + stamp)) {
      manager_ = Zam::makePtr<Hive::EntityManager>(stateDir_);
      entities_ = readStateIn(*manager_);
   } else {
      startAnew();
   }
}

LiveDir::~LiveDir() {
   status().lastSeen = status().stopped = systemTime();
}

void LiveDir::startAnew() {
   wipe();
   isFresh_ = true;
   Hive::EntityManager::stateDirIs(stateDir_);
   manager_ = Zam::makePtr<Hive::EntityManager>(stateDir_);
   renameStamp(stateDir_, stamp, laterStamp);
   State none;
   none.vrfs.emplace_back();
   writeTables(none, *manager_);
   entities_ = State();
   entitiesText_.clear();
}

void LiveDir::wipe() const {
   ::unlink((stateDir_ + "/" + stamp).c_str());  // first: what follows is no state any more
   std::error_code error;
   for (auto const& entry : fs::directory_iterator(stateDir_, error)) {
      if (entry.path().filename() != LiveStatusFile::name) {
         fs::remove_all(entry.path(), error);
      }
   }
}

State LiveDir::earlierEntities() const {
   return entities_;
}

void LiveDir::published() {
   if (isFresh_) {
      renameStamp(stateDir_, laterStamp, stamp);
      isFresh_ = false;
   }
}

bool LiveDir::isInPlace() const {
   return StateDirId(manager_->directory()) == StateDirId(stateDir_);
}

void LiveDir::writeText(char const* name, std::string const& text) const {
   try {
      Zam::NewFile file(manager_->directory(), name);
      file.append(text);
      file.putInPlace();
   } catch (std::system_error const& error) {
      refuse(stateDir_ + "/" + name, error.what());
   }
}

void LiveDir::entitiesAre(State const& state) {
   std::string text = entitiesText(state);
   if (text != entitiesText_) {
      // A configuration names no VRF that the entities do not have, at any time.
      configIs(entities_, state);
      writeText(entitiesFile, text);
      entitiesText_ = std::move(text);
   }
   configIs(state, state);
   entities_.vrfs = state.vrfs;
   status().lastChange = systemTime();
}

// What is configured for the VRFs that both states have, with the routes of the second that do not outlast a restart.
void LiveDir::configIs(State const& state, State const& others) const {
   if (::faccessat(manager_->directory(), entitiesFile, F_OK, 0) != 0) {
      return writeText(configFile, configText(State()));
   }
   StateDirLock const lock(stateDir_);
   State merged;
   for (State const* const from : {&state, &others}) {
      for (VrfState const& vrf : from->vrfs) {
         if (!hasVrf(merged, vrf.id)) {
            merged.vrfs.push_back({.id = vrf.id, .name = vrf.name});
         }
      }
   }
   JsonDocument const document = JsonDocument::loadIn(manager_->directory(), stateDir_, configFile);
   readConfig(document, merged);
   std::string const before = configText(merged);
   std::erase_if(merged.vrfs, [&](VrfState const& vrf) { return !hasVrf(state, vrf.id) || !hasVrf(others, vrf.id); });
   for (VrfState& vrf : merged.vrfs) {
      auto const& own = *std::ranges::find(others.vrfs, vrf.id, &VrfState::id);
      eraseNonPersistent(*vrf.staticRoutes.ip);
      eraseNonPersistent(*vrf.staticRoutes.ip6);
      addNonPersistent(*vrf.staticRoutes.ip, *own.staticRoutes.ip);
      addNonPersistent(*vrf.staticRoutes.ip6, *own.staticRoutes.ip6);
   }
   if (std::string const text = configText(merged); text != before) {
      writeText(configFile, text);
   }
}

}  // namespace state
