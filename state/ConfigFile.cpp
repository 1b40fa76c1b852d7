#include "state/ConfigFile.h"

#include "Hive/EntityManager.h"
#include "state/Interrupts.h"
#include "state/Refuse.h"
#include "state/StateDir.h"
#include "state/text/Documents.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <thread>

namespace state {
namespace {

std::atomic<void (*)(std::string_view)> waitTeller{nullptr};

int opened(std::string const& stateDir) {
   refuseLinkOfOthers(stateDir);
   int const dir = ::open(stateDir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
   if (dir < 0) {
      refuse(stateDir, errno == ENOENT ? "no such state directory" : std::strerror(errno));
   }
   return dir;
}

int openedLock(int dir, std::string const& stateDir) {
   struct stat info {};
   if (::fstat(dir, &info) == 0 && info.st_uid != ::geteuid()) {
      refuse(stateDir, "belongs to another user");
   }
   int const file = ::openat(dir, lockFile, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600);
   if (file < 0) {
      refuse(stateDir, std::string("cannot be locked: ") + std::strerror(errno));
   }
   return file;
}

void tellWho(int lock, std::string const& stateDir) {
   std::array<char, 16> text{};
   ssize_t const size = ::pread(lock, text.data(), text.size(), 0);
   int process = 0;
   std::from_chars(text.data(), text.data() + std::max<ssize_t>(size, 0), process);
   if (auto const teller = waitTeller.load(); teller != nullptr) {
      teller(stateDir + ": waiting for " + (process > 0 ? "process " + std::to_string(process) : "another process") +
             ", which changes it");
   }
}

void sayWho(int lock) {
   std::string const process = std::to_string(::getpid()) + '\n';
   [[maybe_unused]] auto const ignored = ::pwrite(lock, process.data(), process.size(), 0);
   [[maybe_unused]] auto const cut = ::ftruncate(lock, static_cast<off_t>(process.size()));
}

void waitForLock(int lock, std::string const& stateDir) {
   using namespace std::chrono_literals;
   auto const told = std::chrono::steady_clock::now() + 2s;
   bool isTold = false;
   for (auto nap = 1ms; ::flock(lock, LOCK_EX | LOCK_NB) != 0; nap = std::min(2 * nap, 32ms)) {
      if (errno != EWOULDBLOCK && errno != EINTR) {
         refuse(stateDir, std::string("cannot be locked: ") + std::strerror(errno));
      }
      endWhenInterrupted();
      if (!isTold && std::chrono::steady_clock::now() >= told) {
         isTold = true;
         tellWho(lock, stateDir);
      }
      std::this_thread::sleep_for(nap);
   }
   sayWho(lock);
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

void refuseLinkOfOthers(std::string const& stateDir) {
   struct stat info {};
   std::string const name = stateDir.substr(0, stateDir.find_last_not_of('/') + 1);
   if (::lstat(name.c_str(), &info) == 0 && S_ISLNK(info.st_mode) && info.st_uid != ::geteuid() && info.st_uid != 0) {
      refuse(stateDir, "is a link of another user");
   }
}

void waitTellerIs(void (*teller)(std::string_view line)) noexcept {
   waitTeller.store(teller);
}

StateDirLock::Descriptor::~Descriptor() {
   if (number >= 0) {
      ::close(number);
   }
}

StateDirLock::StateDirLock(std::string const& stateDir) {
   do {
      dir_.emplace(opened(stateDir));
      lock_.emplace(openedLock(dir_->number, stateDir));
      waitForLock(lock_->number, stateDir);
   } while (!(StateDirId(dir_->number) == StateDirId(stateDir)));
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
   Zam::removeLeftFiles(lock_.descriptor(), configFile);
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
