#include "state/ConfigFile.h"

#include "Hive/EntityManager.h"
#include "cliprint/Interrupt.h"
#include "state/StateDir.h"
#include "state/text/Documents.h"

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
