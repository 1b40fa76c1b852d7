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
   VrfState& vrf;
};

constexpr auto vrfMembers = std::to_array<Member<RoutesTarget>>({
    {"staticRoutes", [](Node const& n, RoutesTarget& t) { readStaticRoutes(n, t.vrf.name, t.vrf.staticRoutes); }},
});

void readVrfConfig(Node const& node, State& state) {
   auto const vrf =
       std::ranges::find_if(state.vrfs, [&](VrfState const& v) { return std::string_view(v.name) == node.key(); });
   if (vrf == state.vrfs.end()) {
      node.fail("no such VRF");
   }
   RoutesTarget target{*vrf};
   readObject(node, vrfMembers, target);
}

constexpr auto configMembers = std::to_array<Member<VrfsTarget>>({
    {"vrfs",
     [](Node const& n, VrfsTarget& t) { n.forEachMember([&](Node const& vrf) { readVrfConfig(vrf, t.state); }); }},
});

void waitForLock(int descriptor, std::string const& stateDir) {
   while (::flock(descriptor, LOCK_EX) != 0) {
      if (errno != EINTR) {
         throw Hive::StateError(stateDir + ": cannot be locked: " + std::strerror(errno));
      }
      if (cliprint::interrupted()) {
         throw cliprint::SigIntException();
      }
   }
}

}  // namespace

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
   int const file = ::openat(lock_.descriptor(), besideFile, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
   if (file < 0) {
      fail("written");
   }
   std::string_view left = text;
   ssize_t written = 0;
   while (!left.empty() && (written >= 0 || errno == EINTR)) {
      written = ::write(file, left.data(), left.size());
      left.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
   }
   bool const isSafe = left.empty() && ::fsync(file) == 0;
   int const error = errno;
   ::close(file);
   if (!isSafe) {
      ::unlinkat(lock_.descriptor(), besideFile, 0);
      errno = error;
      fail("written");
   }
}

void ConfigChange::putInPlace() {
   if (::renameat(lock_.descriptor(), besideFile, lock_.descriptor(), configFile) != 0) {
      fail("put in place");
   }
   ::fsync(lock_.descriptor());
}

}  // namespace state
