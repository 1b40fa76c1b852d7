#include "Zam/NewFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace Zam {

namespace {

[[noreturn]] void fail(char const* what) {
   throw std::system_error(errno, std::generic_category(), what);
}

int openDirectory(int dir, std::string const& path) noexcept {
   return ::openat(dir, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

// Between the name of a place and digits, in the names of what is not yet there.
constexpr std::string_view mark = ".new.";

std::string parentOf(std::string const& place) {
   auto const slash = place.rfind('/');
   return slash == std::string::npos ? "." : place.substr(0, slash + 1);
}

bool isBeside(std::string_view place, std::string_view name) {
   auto const at = name.rfind(mark);
   bool const isMarked = at != std::string_view::npos && (place.empty() || name.substr(0, at) == place);
   return isMarked && name.find_first_not_of("0123456789", at + mark.size()) == std::string_view::npos;
}

bool isLocked(int fd) noexcept {
   return ::flock(fd, LOCK_EX | LOCK_NB) == 0;
}

// A file of this user that no process holds.
bool isLeft(int dir, char const* name) noexcept {
   int const fd = ::openat(dir, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
   if (fd < 0) {
      return false;
   }
   struct stat info {};
   bool const left = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == ::geteuid() && isLocked(fd);
   ::close(fd);
   return left;
}

std::string ownLink(int fd) {
   return "/proc/self/fd/" + std::to_string(fd);
}

}  // namespace

Directory::Directory(std::string const& path) : fd_(openDirectory(AT_FDCWD, path)) {
   if (fd_ < 0) {
      fail("cannot be opened");
   }
}

Directory::~Directory() {
   ::close(fd_);
}

NewFile::NewFile(int dir, std::string place, mode_t mode) : dir_(dir), place_(std::move(place)) {
   if (!openUnnamed(mode)) {
      openNamed(mode);
   }
}

NewFile::~NewFile() {
   if (!beside_.empty()) {
      ::unlinkat(dir_, beside_.c_str(), 0);
   }
   ::close(fd_);
}

std::string NewFile::unguessable() const {
   std::array<U64, 2> random{};
   if (::getrandom(random.data(), sizeof(random), 0) != sizeof(random)) {
      fail("cannot be named");
   }
   return place_ + std::string(mark) + std::to_string(random[0]) + std::to_string(random[1]);
}

// A file without a name can get one only through /proc.
bool NewFile::openUnnamed(mode_t mode) noexcept {
   fd_ = ::openat(dir_, parentOf(place_).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
   if (fd_ >= 0 && ::access(ownLink(fd_).c_str(), F_OK) != 0) {
      ::close(std::exchange(fd_, -1));
   }
   return fd_ >= 0 && isLocked(fd_);
}

void NewFile::openNamed(mode_t mode) {
   while (!isMade(unguessable(), mode)) {
   }
}

// False when somebody who looked for what was left was there before the lock.
bool NewFile::isMade(std::string const& name, mode_t mode) {
   fd_ = ::openat(dir_, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
   if (fd_ < 0) {
      fail("cannot be made");
   }
   struct stat info {};
   if (!isLocked(fd_) || ::fstat(fd_, &info) != 0 || info.st_nlink == 0) {
      ::close(std::exchange(fd_, -1));
      return false;
   }
   beside_ = name;
   return true;
}

void NewFile::append(std::string_view text) {
   while (!text.empty()) {
      ssize_t const written = ::write(fd_, text.data(), text.size());
      if (written < 0 && errno != EINTR) {
         fail("cannot be written");
      }
      text.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
   }
}

void NewFile::nameIt() {
   if (beside_.empty()) {
      std::string name = unguessable();
      if (::linkat(AT_FDCWD, ownLink(fd_).c_str(), dir_, name.c_str(), AT_SYMLINK_FOLLOW) != 0) {
         fail("cannot be named");
      }
      beside_ = std::move(name);
   }
}

void NewFile::putInPlace() {
   nameIt();
   if (::renameat(dir_, beside_.c_str(), dir_, place_.c_str()) != 0) {
      fail("cannot be put in place");
   }
   beside_.clear();
}

void NewFile::putInPlaceDurably() {
   if (::fsync(fd_) != 0) {
      fail("cannot be written");
   }
   putInPlace();
   syncParent();
}

void NewFile::syncParent() const {
   int const directory = openDirectory(dir_, parentOf(place_));
   bool const isDone = directory >= 0 && ::fsync(directory) == 0;
   int const error = errno;
   if (directory >= 0) {
      ::close(directory);
   }
   if (!isDone) {
      errno = error;
      fail("cannot be made to last");
   }
}

U32 removeLeftFiles(int dir, std::string const& place) {
   auto const slash = place.rfind('/');
   std::string const name = slash == std::string::npos ? place : place.substr(slash + 1);
   int const parent = openDirectory(dir, parentOf(place));
   DIR* const entries = parent >= 0 ? ::fdopendir(parent) : nullptr;
   U32 removed = 0;
   while (dirent const* const entry = entries != nullptr ? ::readdir(entries) : nullptr) {
      bool const goes = isBeside(name, entry->d_name) && isLeft(parent, entry->d_name);
      removed += goes && ::unlinkat(parent, entry->d_name, 0) == 0 ? 1 : 0;
   }
   entries != nullptr ? ::closedir(entries) : parent >= 0 ? ::close(parent) : 0;
   return removed;
}

}  // namespace Zam
