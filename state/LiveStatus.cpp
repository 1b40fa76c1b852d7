#include "state/LiveStatus.h"

#include "Hive/EntityManager.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace state {
namespace {

struct flock wholeFile() {
   struct flock lock {};
   lock.l_type = F_WRLCK;
   lock.l_whence = SEEK_SET;
   return lock;
}

std::optional<LiveStatus> statusIn(int fd) {
   LiveStatus status;
   bool const isWhole = ::pread(fd, &status, sizeof status, 0) == sizeof status;
   return isWhole && status.magic == LiveStatus::magicNumber ? std::optional(status) : std::nullopt;
}

[[noreturn]] void refuseKept(int fd, std::string const& stateDir) {
   auto const status = statusIn(fd);
   ::close(fd);
   throw Hive::StateError(stateDir + ": is kept by another follower" +
                          (status ? ", process " + std::to_string(status->pid) : ""));
}

}  // namespace

U64 systemTime() noexcept {
   constexpr U64 nanoseconds = 1'000'000'000;
   timespec now{};
   ::clock_gettime(CLOCK_REALTIME, &now);
   return static_cast<U64>(now.tv_sec) * nanoseconds + static_cast<U64>(now.tv_nsec);
}

U64 networkNamespace() noexcept {
   struct stat info {};
   return ::stat("/proc/thread-self/ns/net", &info) == 0 ? info.st_ino : 0;
}

LiveStatusFile::LiveStatusFile(int dir, std::string const& stateDir)
    : fd_(::openat(dir, name, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644)) {
   auto lock = wholeFile();
   if (fd_ >= 0 && ::fcntl(fd_, F_OFD_SETLK, &lock) != 0) {
      refuseKept(fd_, stateDir);
   }
   if (fd_ >= 0 && ::posix_fallocate(fd_, 0, sizeof(LiveStatus)) == 0) {
      void* const mapped = ::mmap(nullptr, sizeof(LiveStatus), PROT_READ | PROT_WRITE, MAP_SHARED, fd_, 0);
      if (mapped != MAP_FAILED) {
         status_ = new (mapped) LiveStatus();
         return;
      }
   }
   std::string const why = std::strerror(errno);
   ::close(fd_);
   throw Hive::StateError(stateDir + "/" + name + ": " + why);
}

LiveStatusFile::~LiveStatusFile() {
   ::munmap(status_, sizeof(LiveStatus));
   ::close(fd_);
}

std::optional<LiveState> liveStateOf(std::string const& stateDir) {
   std::string const file = stateDir + "/" + LiveStatusFile::name;
   int const fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
   if (fd < 0) {
      return std::nullopt;
   }
   auto const status = statusIn(fd);
   struct flock lock = wholeFile();
   lock.l_type = F_RDLCK;
   bool const isKept = ::fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
   ::close(fd);
   return status ? std::optional(LiveState{*status, isKept}) : std::nullopt;
}

}  // namespace state
