#include "Zam/NewFile.h"

#include "Zam/Int.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/random.h>
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

std::string NewFile::parent() const {
   auto const slash = place_.rfind('/');
   return slash == std::string::npos ? "." : place_.substr(0, slash + 1);
}

std::string NewFile::unguessable() const {
   std::array<U64, 2> random{};
   if (::getrandom(random.data(), sizeof(random), 0) != sizeof(random)) {
      fail("cannot be named");
   }
   return place_ + ".new." + std::to_string(random[0]) + std::to_string(random[1]);
}

// A file without a name can get one only through /proc.
bool NewFile::openUnnamed(mode_t mode) noexcept {
   fd_ = ::openat(dir_, parent().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
   if (fd_ >= 0 && ::access(ownLink(fd_).c_str(), F_OK) != 0) {
      ::close(std::exchange(fd_, -1));
   }
   return fd_ >= 0;
}

void NewFile::openNamed(mode_t mode) {
   std::string name = unguessable();
   fd_ = ::openat(dir_, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
   if (fd_ < 0) {
      fail("cannot be made");
   }
   beside_ = std::move(name);
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
   int const directory = openDirectory(dir_, parent());
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

}  // namespace Zam
