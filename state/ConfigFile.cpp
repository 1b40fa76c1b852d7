#include "state/ConfigFile.h"

#include "Hive/EntityManager.h"
#include "cliprint/Interrupt.h"
#include "state/StateDir.h"
#include "state/text/Documents.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace state {
namespace {

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

}  // namespace

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

ConfigChange::ConfigChange(std::string const& stateDir)
    : stateDir_(stateDir),
      lock_(stateDir),
      state_(readStateDir(stateDir)) {}

void ConfigChange::commit() {
   writeBeside();
   putInPlace();
}

void ConfigChange::fail(std::system_error const& error) const {
   throw Hive::StateError(stateDir_ + "/" + configFile + ": " + error.what());
}

void ConfigChange::writeBeside() try {
   std::string const text = configText(state_);
   readConfig(JsonDocument::parse(configFile, text), state_);  // what could not be read again is not written
   struct stat before {};
   bool const isNew = ::fstatat(lock_.descriptor(), configFile, &before, 0) != 0;
   beside_.emplace(lock_.descriptor(), configFile);
   if (!isNew && ::fchmod(beside_->fd(), before.st_mode & 0777) != 0) {
      throw std::system_error(errno, std::generic_category(), "cannot be written");
   }
   beside_->append(text);
} catch (std::system_error const& error) {
   fail(error);
}

void ConfigChange::putInPlace() try {
   beside_->putInPlaceDurably();
   beside_.reset();
} catch (std::system_error const& error) {
   fail(error);
}

}  // namespace state
