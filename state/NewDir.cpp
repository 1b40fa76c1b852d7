#include "state/NewDir.h"

#include "Hive/EntityManager.h"
#include "state/Refuse.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <vector>

namespace state {
namespace {

namespace fs = std::filesystem;

std::string unguessable() {
   std::array<U64, 2> random{};
   if (::getrandom(random.data(), sizeof(random), 0) != sizeof(random)) {
      throw Hive::StateError(std::string("cannot choose a name: ") + std::strerror(errno));
   }
   return std::to_string(random[0]) + std::to_string(random[1]);
}

std::string linkTo(int fd) {
   return "/proc/self/fd/" + std::to_string(fd);
}

// A directory of this user that no process holds; -1 when it is none.
int lockedLeftover(int parent, char const* name) {
   int const dir = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
   struct stat info {};
   if (dir >= 0 && (::fstat(dir, &info) != 0 || info.st_uid != ::geteuid() || ::flock(dir, LOCK_EX | LOCK_NB) != 0)) {
      ::close(dir);
      return -1;
   }
   return dir;
}

std::vector<std::string> namesIn(fs::path const& parent, std::string const& prefix) {
   std::vector<std::string> names;
   std::error_code error;
   for (auto entry = fs::directory_iterator(parent, error); !error && entry != fs::directory_iterator();
        entry.increment(error)) {
      if (std::string name = entry->path().filename(); name.starts_with(prefix)) {
         names.push_back(std::move(name));
      }
   }
   return names;
}

}  // namespace

NewDir::NewDir(fs::path const& parent, std::string const& prefix, mode_t mode) try
    : parentPath_(parent),
      parent_(parent.string()) {
   while (!isMade(prefix + unguessable(), mode)) {
   }
} catch (std::system_error const& error) {
   throw Hive::StateError(parent.string() + ": " + error.what());
}

// False when somebody who looked for leftovers was there before the lock.
bool NewDir::isMade(std::string const& name, mode_t mode) {
   if (::mkdirat(parent_.fd(), name.c_str(), mode) != 0) {
      refuse(parentPath_, std::string("nothing can be made there: ") + std::strerror(errno));
   }
   name_ = name;
   struct stat named {};
   struct stat own {};
   try {
      dir_.emplace((fs::path(linkTo(parent_.fd())) / name).string());
   } catch (std::system_error const&) {
      return false;
   }
   bool const isOurs = ::flock(dir_->fd(), LOCK_EX | LOCK_NB) == 0 && ::fstat(dir_->fd(), &own) == 0 &&
                       ::fstatat(parent_.fd(), name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
                       own.st_ino == named.st_ino && own.st_dev == named.st_dev;
   mode_ = own.st_mode & 0777U;
   return isOurs && ::fchmod(dir_->fd(), 0700) == 0;  // nobody else can lock it when we are gone
}

NewDir::~NewDir() {
   std::error_code ignored;
   fs::remove_all(fs::path(linkTo(parent_.fd())) / name_, ignored);
}

std::string NewDir::path() const {
   return linkTo(fd());
}

void NewDir::putInPlace(std::string const& name, bool replacing) const {
   ::fchmod(dir_->fd(), mode_);
   unsigned const flags = replacing ? RENAME_EXCHANGE : RENAME_NOREPLACE;
   if (::renameat2(parent_.fd(), name_.c_str(), parent_.fd(), name.c_str(), flags) != 0) {
      refuse(parentPath_ / name, std::string("cannot be put in place: ") + std::strerror(errno));
   }
}

U32 removeLeftDirs(fs::path const& parent, std::string const& prefix) {
   U32 removed = 0;
   int const parentDir = ::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
   for (std::string const& name : namesIn(parent, prefix)) {
      if (int const dir = lockedLeftover(parentDir, name.c_str()); dir >= 0) {
         std::error_code error;
         fs::remove_all(parent / name, error);
         removed += error ? 0 : 1;
         ::close(dir);
      }
   }
   if (parentDir >= 0) {
      ::close(parentDir);
   }
   return removed;
}

}  // namespace state
