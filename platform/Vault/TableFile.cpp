#include "Vault/TableFile.h"

#include "Zam/Trace.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

namespace Vault {

namespace {

Zam::TraceHandle const trace("Vault");

[[noreturn]] void refuseFile(std::string const& path, std::string const& why) {
   throw MountError(path + ": " + why);
}

[[noreturn]] void refuseForErrno(std::string const& path, char const* doing) {
   int const error = errno;
   refuseFile(path, std::string(doing) + ": " + std::strerror(error));
}

int openFile(std::string const& path, int flags) {
   int const fd = ::open(path.c_str(), flags | O_CLOEXEC, 0644);
   if (fd < 0) {
      refuseForErrno(path, "cannot be opened");
   }
   return fd;
}

struct flock wholeFile(short type) noexcept {
   struct flock lock {};
   lock.l_type = type;
   lock.l_whence = SEEK_SET;
   return lock;
}

bool lockForWriting(int fd) noexcept {
   auto lock = wholeFile(F_WRLCK);
   return ::fcntl(fd, F_OFD_SETLK, &lock) == 0;
}

// A file under a name of its own until it is complete.
class NewFile {
 public:
   explicit NewFile(std::string const& place)
       : name_(place + ".new." + std::to_string(::getpid())),
         fd_(openFile(name_, O_RDWR | O_CREAT | O_TRUNC)) {}
   NewFile(NewFile const&) = delete;
   NewFile& operator=(NewFile const&) = delete;
   ~NewFile() {
      if (fd_ >= 0) {
         ::close(fd_);
         ::unlink(name_.c_str());
      }
   }

   std::string const& name() const noexcept { return name_; }
   int fd() const noexcept { return fd_; }
   // Puts it in its place and hands it over.
   int placed(std::string const& place) {
      if (::rename(name_.c_str(), place.c_str()) != 0) {
         refuseForErrno(place, "cannot be put in place");
      }
      return std::exchange(fd_, -1);
   }

 private:
   std::string name_;
   int fd_;
};

// An earlier table that still has its writer is not replaced under it.
void refuseWhenWritten(std::string const& path) {
   int const fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
   if (fd < 0) {
      return;
   }
   bool const free = lockForWriting(fd);
   ::close(fd);
   if (!free) {
      refuseFile(path, "has a writer already");
   }
}

TableShape shapeOf(TableHeader const& header, U32 slotSize) noexcept {
   return {load(header.capacity), load(header.bucketCount), load(header.arenaCapacity), slotSize,
           load(header.elementSize)};
}

void fillHeader(NewFile const& file, RecordLayout const& layout, TableShape const& shape) {
   TableHeader header{};
   header.version = layoutVersion;
   header.recordSize = layout.recordSize;
   header.recordHash = layout.hash;
   header.capacity = shape.capacity;
   header.bucketCount = shape.bucketCount;
   header.arenaCapacity = shape.arenaCapacity;
   header.elementSize = shape.elementSize;
   if (::ftruncate(file.fd(), static_cast<off_t>(shape.fileSize())) != 0 ||
       ::pwrite(file.fd(), &header, sizeof(header), 0) != sizeof(header)) {
      refuseForErrno(file.name(), "cannot be written");
   }
   // Last: the file is a table from here on.
   if (::pwrite(file.fd(), &tableMagic, sizeof(tableMagic), 0) != sizeof(tableMagic)) {
      refuseForErrno(file.name(), "cannot be written");
   }
}

}  // namespace

TableFile TableFile::openReader(std::string path, RecordLayout const& layout) {
   int const fd = openFile(path, O_RDONLY);
   return TableFile(std::move(path), fd, layout, false);
}

TableFile TableFile::openWriter(std::string path, RecordLayout const& layout) {
   int const fd = openFile(path, O_RDWR);
   if (!lockForWriting(fd)) {
      ::close(fd);
      refuseFile(path, "has a writer already");
   }
   return TableFile(std::move(path), fd, layout, true);
}

TableFile TableFile::create(std::string path, RecordLayout const& layout, Sizes sizes) {
   if (sizes.capacity == 0 || sizes.capacity > maxCapacity || sizes.arenaCapacity > maxArenaCapacity) {
      refuseFile(path,
                 "a table has 1 to " + std::to_string(maxCapacity) + " entries, not " + std::to_string(sizes.capacity));
   }
   refuseWhenWritten(path);
   NewFile file(path);
   lockForWriting(file.fd());
   fillHeader(
       file, layout,
       {sizes.capacity, std::bit_ceil(sizes.capacity), sizes.arenaCapacity, layout.slotSize, layout.elementSize});
   int const fd = file.placed(path);
   return TableFile(std::move(path), fd, layout, true);
}

TableFile::TableFile(std::string path, int fd, RecordLayout const& layout, bool writable)
    : path_(std::move(path)),
      fd_(fd) {
   try {
      struct stat status {};
      if (::fstat(fd_, &status) != 0) {
         refuseForErrno(path_, "cannot be examined");
      }
      if (!S_ISREG(status.st_mode)) {
         refuse("is not a file");
      }
      bytes_ = static_cast<U64>(status.st_size);
      if (bytes_ < sizeof(TableHeader)) {
         refuse("is too short for a table, " + std::to_string(bytes_) + " bytes");
      }
      void* const base = ::mmap(nullptr, bytes_, writable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, fd_, 0);
      if (base == MAP_FAILED) {
         refuseForErrno(path_, "cannot be mapped");
      }
      base_ = static_cast<std::byte*>(base);
      validate(layout);
   } catch (...) {
      release();
      throw;
   }
}

TableFile::TableFile(TableFile&& other) noexcept
    : path_(std::move(other.path_)),
      fd_(std::exchange(other.fd_, -1)),
      base_(std::exchange(other.base_, nullptr)),
      bytes_(other.bytes_),
      shape_(other.shape_),
      slots_(other.slots_),
      arena_(other.arena_),
      buckets_(other.buckets_),
      hook_(std::move(other.hook_)),
      corruption_(std::move(other.corruption_)),
      corruptions_(other.corruptions_),
      vanished_(other.vanished_),
      waitsInVain_(other.waitsInVain_) {}

TableFile::~TableFile() {
   release();
}

void TableFile::release() noexcept {
   if (base_ != nullptr) {
      ::munmap(base_, bytes_);
   }
   if (fd_ >= 0) {
      ::close(fd_);
   }
}

void TableFile::validate(RecordLayout const& layout) {
   TableHeader const& found = header();
   if (load(found.magic, std::memory_order_acquire) != tableMagic) {
      refuse("is not a table, the magic number is missing");
   }
   if (U32 const version = load(found.version); version != layoutVersion) {
      refuse("layout version " + std::to_string(version) + ", this program needs " + std::to_string(layoutVersion));
   }
   if (load(found.recordHash) != layout.hash || load(found.recordSize) != layout.recordSize ||
       load(found.elementSize) != layout.elementSize) {
      refuse("holds other records than " + std::string(layout.name) + " as this program knows it");
   }
   TableShape const shape = shapeOf(found, layout.slotSize);
   if (shape.capacity == 0 || shape.capacity > maxCapacity || shape.arenaCapacity > maxArenaCapacity ||
       shape.bucketCount != std::bit_ceil(shape.capacity)) {
      refuse("impossible capacity " + std::to_string(shape.capacity) + " with " + std::to_string(shape.bucketCount) +
             " buckets and room for " + std::to_string(shape.arenaCapacity) + " elements");
   }
   if (bytes_ < shape.fileSize()) {
      refuse("is cut short, " + std::to_string(bytes_) + " of " + std::to_string(shape.fileSize()) + " bytes");
   }
   shape_ = shape;
   buckets_ = reinterpret_cast<U32 const*>(base_ + shape_.bucketOffset());
   slots_ = base_ + shape_.slotOffset();
   arena_ = base_ + shape_.arenaOffset();
}

void TableFile::refuse(std::string const& why) const {
   refuseFile(path_, why);
}

bool TableFile::hasWriter() const noexcept {
   auto lock = wholeFile(F_RDLCK);
   return ::fcntl(fd_, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

std::byte const* TableFile::elementsAt(U32 first, U32 count) const noexcept {
   if (first > shape_.arenaCapacity || count > shape_.arenaCapacity - first) {
      return nullptr;
   }
   return arena_ + U64{first} * shape_.elementSize;
}

void TableFile::corruptionIs(std::string_view message) const {
   ++corruptions_;
   corruption_ = message;
   if (hook_) {
      hook_(message);
   } else {
      trace(0, "corruptionIs", message);
   }
}

void TableFile::corrupted(std::string_view what, U64 value) const {
   throw CorruptionError(path_ + ": " + std::string(what) + " " + std::to_string(value));
}

void TableFile::vanishedInc() const noexcept {
   ++vanished_;
   trace(8, "vanished", path_);
}

// Most waits end within a few rounds: an entry is being written for nanoseconds. A writer that lost its processor in
// the middle comes back within milliseconds; one that ended there never does.
bool TableFile::Wait::again() noexcept {
   constexpr U32 spins = 100;
   constexpr U32 checkEvery = 20;
   constexpr std::chrono::microseconds nap(50);
   ++rounds_;
   if (rounds_ <= spins) {
      return true;
   }
   U32 const naps = rounds_ - spins;
   U32 const maxNaps = file_.waitsInVain_ == 0 ? 5000 : 20;
   if (naps > maxNaps || writerGone_) {
      ++file_.waitsInVain_;
      return false;
   }
   if (naps % checkEvery == 1 && !file_.hasWriter()) {
      // It may have finished the entry before it went: one more look.
      writerGone_ = true;
      return true;
   }
   std::this_thread::sleep_for(nap);
   return true;
}

}  // namespace Vault
