#include "programs/state/ConfigFile.h"

#include "Hive/EntityManager.h"
#include "cliprint/Interrupt.h"
#include "programs/state/Snapshot.h"
#include "programs/state/StateWriter.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace state {
namespace {

constexpr char const* besideFile = "config.json.new";

struct VrfsTarget {
   State& state;
};

struct RoutesTarget {
   State const& state;
   VrfState& vrf;
};

constexpr auto vrfMembers = std::to_array<Member<RoutesTarget>>({
    {"staticRoutes",
     [](Node const& n, RoutesTarget& t) {
        readStaticRoutes(n, {t.vrf.name, true, t.state.maxVias, t.state.maxVias6}, t.vrf.staticRoutes);
     }},
});

void readVrfConfig(Node const& node, State& state) {
   auto const vrf =
       std::ranges::find_if(state.vrfs, [&](VrfState const& v) { return std::string_view(v.name) == node.key(); });
   if (vrf == state.vrfs.end()) {
      node.fail("no such VRF");
   }
   RoutesTarget target{state, *vrf};
   readObject(node, vrfMembers, target);
}

constexpr auto configMembers = std::to_array<Member<VrfsTarget>>({
    {"vrfs",
     [](Node const& n, VrfsTarget& t) { n.forEachMember([&](Node const& vrf) { readVrfConfig(vrf, t.state); }); }},
});

void waitForLock(int descriptor, std::string const& stateDir) {
   do {
      if (cliprint::interrupted()) {
         throw cliprint::SigIntException();
      }
      if (::flock(descriptor, LOCK_EX) == 0) {
         return;
      }
   } while (errno == EINTR);
   throw Hive::StateError(stateDir + ": cannot be locked: " + std::strerror(errno));
}

bool writeAll(int file, std::string_view text) {
   while (!text.empty()) {
      ssize_t const written = ::write(file, text.data(), text.size());
      if (written < 0 && errno != EINTR) {
         return false;
      }
      text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
   }
   return true;
}

}  // namespace

bool writeDurably(int dir, char const* name, std::string_view text, mode_t mode) {
   int const file = ::openat(dir, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
   if (file < 0) {
      return false;
   }
   bool const isDone = writeAll(file, text) && ::fsync(file) == 0;
   int const error = errno;
   ::close(file);
   if (!isDone) {
      ::unlinkat(dir, name, 0);
      errno = error;
   }
   return isDone;
}

std::string configText(State const& state) {
   std::string out = "{\"vrfs\":{";
   std::string_view separator;
   for (VrfState const& vrf : state.vrfs) {
      if (!vrf.staticRoutes.isEmpty()) {
         out.append(separator).append(jsonQuoted(vrf.name)).append(":{\"staticRoutes\":");
         appendStaticRoutes(out, vrf.staticRoutes);
         out += '}';
         separator = ",";
      }
   }
   return out += "}}\n";
}

void readConfig(JsonDocument const& document, State& state) {
   for (VrfState& vrf : state.vrfs) {
      vrf.staticRoutes = {};
   }
   VrfsTarget target{state};
   readObject(document.root(), configMembers, target);
}

StateDirId::StateDirId(std::string const& stateDir) {
   struct stat info {};
   if (::stat(stateDir.c_str(), &info) == 0) {
      device_ = info.st_dev;
      inode_ = info.st_ino;
   }
}

StateDirId::StateDirId(int descriptor) {
   struct stat info {};
   if (::fstat(descriptor, &info) == 0) {
      device_ = info.st_dev;
      inode_ = info.st_ino;
   }
}

StateDirLock::StateDirLock(std::string const& stateDir) {
   while (true) {
      descriptor_ = ::open(stateDir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
      if (descriptor_ < 0) {
         throw Hive::StateError(stateDir + ": " +
                                (errno == ENOENT ? "no such state directory" : std::string(std::strerror(errno))));
      }
      try {
         waitForLock(descriptor_, stateDir);
      } catch (...) {
         ::close(descriptor_);
         throw;
      }
      if (StateDirId(descriptor_) == StateDirId(stateDir)) {
         return;
      }
      ::close(descriptor_);
   }
}

StateDirLock::~StateDirLock() {
   ::close(descriptor_);
}

ConfigChange::ConfigChange(std::string const& stateDir) : stateDir_(stateDir), lock_(stateDir) {
   Zam::makePtr<Hive::EntityManager>(stateDir);  // throws when it is no state directory
   state_ = readStateDir(stateDir);
}

void ConfigChange::commit() {
   writeBeside();
   putInPlace();
}

void ConfigChange::fail(std::string_view what) const {
   throw Hive::StateError(stateDir_ + "/" + configFile + ": cannot be " + std::string(what) + ": " +
                          std::strerror(errno));
}

void ConfigChange::writeBeside() {
   std::string const text = configText(state_);
   readConfig(JsonDocument::parse(configFile, text), state_);  // what could not be read again is not written
   struct stat before {};
   bool const isNew = ::fstatat(lock_.descriptor(), configFile, &before, 0) != 0;
   ::unlinkat(lock_.descriptor(), besideFile, 0);  // of a writer that was killed
   if (!writeDurably(lock_.descriptor(), besideFile, text, isNew ? 0666 : before.st_mode & 0777)) {
      fail("written");
   }
}

void ConfigChange::putInPlace() {
   if (::renameat(lock_.descriptor(), besideFile, lock_.descriptor(), configFile) != 0) {
      fail("put in place");
   }
   if (::fsync(lock_.descriptor()) != 0) {
      fail("made to last");
   }
}

}  // namespace state
