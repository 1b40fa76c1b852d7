#include "state/StateDir.h"

#include "cliprint/Interrupt.h"
#include "state/ConfigFile.h"
#include "state/NewDir.h"
#include "state/OneLoad.h"
#include "state/Refuse.h"
#include "state/text/Documents.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

namespace state {
namespace {

namespace fs = std::filesystem;

constexpr char const* privatePrefix = ".kiv-private.";

// A state, or nothing that anybody put there.
bool isReplaceable(fs::path const& dir) {
   std::error_code error;
   auto const isLock = [](fs::directory_entry const& entry) { return entry.path().filename() == lockFile; };
   return fs::exists(dir / "hive.json", error) ||
          (std::all_of(fs::directory_iterator(dir, error), {}, isLock) && !error);
}

// The directory itself, whatever links and dots lead there.
fs::path resolved(std::string const& stateDir) {
   refuseLinkOfOthers(stateDir);
   std::error_code error;
   fs::path const dir = stateDir.empty() ? fs::path() : fs::weakly_canonical(fs::absolute(stateDir), error);
   if (error || stateDir.empty()) {
      refuse(stateDir, error ? error.message() : "is no directory name");
   }
   return dir.has_filename() ? dir : dir.parent_path();
}

std::string prefixOf(fs::path const& place) {
   return "." + place.filename().string() + ".new.";
}

// Its writer would go on with tables that nobody finds any more.
void checkNobodyWrites(fs::path const& place) {
   std::error_code error;
   for (auto entry = fs::recursive_directory_iterator(place, error); !error && entry != fs::end(entry);
        entry.increment(error)) {
      int const fd = ::open(entry->path().c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
      struct flock lock {};
      lock.l_type = F_RDLCK;
      bool const isWritten = fd >= 0 && ::fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type == F_WRLCK;
      ::close(fd);
      if (isWritten) {
         refuse(entry->path(), "is being written by another process");
      }
   }
}

void checkPlace(fs::path const& place, std::string const& stateDir) {
   struct stat info {};
   if (::lstat(place.c_str(), &info) != 0) {
      return;
   }
   if (!S_ISDIR(info.st_mode) || !isReplaceable(place)) {
      refuse(stateDir, "is there and is no state directory");
   }
   if (info.st_uid != ::geteuid()) {
      refuse(stateDir, "belongs to another user");
   }
   checkNobodyWrites(place);
}

// What could not be read again is not written.
void checkReadable(std::string const& entities, std::string const& config) {
   State again = readEntities(JsonDocument::parse(entitiesFile, entities));
   readConfig(JsonDocument::parse(configFile, config), again);
}

void writeText(int dir, char const* name, std::string const& text) {
   try {
      Zam::NewFile file(dir, name);
      file.append(text);
      file.putInPlaceDurably();
   } catch (std::system_error const& error) {
      throw Hive::StateError(std::string(name) + ": " + error.what());
   }
}

fs::path temporary() {
   char const* const named = std::getenv("TMPDIR");
   return named != nullptr ? named : "/tmp";
}

std::unique_ptr<NewDir> privateDir() {
   constexpr char const* inMemory = "/dev/shm";
   for (fs::path const& parent : {fs::path(inMemory), temporary()}) {
      removeLeftDirs(parent, privatePrefix);
   }
   try {
      return std::make_unique<NewDir>(inMemory, privatePrefix, 0700);
   } catch (Hive::StateError const&) {
      return std::make_unique<NewDir>(temporary(), privatePrefix, 0700);
   }
}

}  // namespace

void writeStateDir(State const& state, std::string const& stateDir) {
   fs::path const place = resolved(stateDir);
   checkPlace(place, stateDir);
   std::string const entities = entitiesText(state);
   std::string const config = configText(state);
   checkReadable(entities, config);
   removeLeftDirs(place.parent_path(), prefixOf(place));
   NewDir const fresh(place.parent_path(), prefixOf(place), 0755);
   toldOf(place.string(), fresh.path(), [&] {
      Hive::EntityManager::stateDirIs(fresh.path());
      writeTables(state, *Zam::makePtr<Hive::EntityManager>(fresh.path()));
      writeText(fresh.fd(), entitiesFile, entities);
      writeText(fresh.fd(), configFile, config);
   });
   std::optional<StateDirLock> lock;
   if (fs::exists(place)) {
      lock.emplace(place);
      checkPlace(place, stateDir);
   }
   endWhenInterrupted();
   fresh.putInPlace(place.filename(), lock.has_value());
}

U32 removeLeftovers(std::string const& stateDir) {
   fs::path const place = resolved(stateDir);
   U32 files = Zam::removeLeftFiles(AT_FDCWD, place / "");
   std::error_code error;
   for (auto entry = fs::recursive_directory_iterator(place, error); !error && entry != fs::end(entry);
        entry.increment(error)) {
      if (entry->is_directory(error)) {
         files += Zam::removeLeftFiles(AT_FDCWD, entry->path() / "");
      }
   }
   return files + removeLeftDirs(place.parent_path(), prefixOf(place)) + removeLeftDirs("/dev/shm", privatePrefix) +
          removeLeftDirs(temporary(), privatePrefix);
}

State readStateIn(Hive::EntityManager const& manager) {
   State state = readEntities(JsonDocument::loadIn(manager.directory(), manager.stateDir(), entitiesFile));
   if (manager.exists(configFile)) {
      readConfig(JsonDocument::loadIn(manager.directory(), manager.stateDir(), configFile), state);
   }
   return state;
}

State readStateDir(std::string const& stateDir) {
   return ofOneLoad(stateDir, [](auto const& manager) { return readStateIn(*manager); });
}

PrivateStateDir::PrivateStateDir() : dir_(privateDir()), path_(dir_->path()) {}

PrivateStateDir::~PrivateStateDir() = default;

}  // namespace state
