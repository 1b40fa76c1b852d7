#include "Vault/TableFile.h"

#include "Zam/Trace.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>

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

// Does it, and says of which file what could not be done.
template <class Act>
decltype(auto) forFile(std::string const& path, Act&& act) {
   try {
      return act();
   } catch (std::system_error const& error) {
      refuseFile(path, error.what());
   }
}

class OpenFile {
 public:
   OpenFile(Place const& place, int flags) noexcept
       : fd_(::openat(place.dirFd(), place.name.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
   OpenFile(OpenFile const&) = delete;
   OpenFile& operator=(OpenFile const&) = delete;
   ~OpenFile() {
      if (fd_ >= 0) {
         ::close(fd_);
      }
   }
   int fd() const noexcept { return fd_; }

 private:
   int fd_;
};

struct stat statusOf(int fd) noexcept {
   struct stat status {};
   ::fstat(fd, &status);
   return status;
}

struct flock wholeFile(short type) noexcept {
   struct flock lock {};
   lock.l_type = type;
   lock.l_whence = SEEK_SET;
   return lock;
}

// The lock belongs to the open file, which lives as long as it is mapped.
bool lockForWriting(int fd) noexcept {
   auto lock = wholeFile(F_WRLCK);
   return ::fcntl(fd, F_OFD_SETLK, &lock) == 0;
}

bool isInPlace(Place const& place, int fd) noexcept {
   struct stat there {};
   auto const own = statusOf(fd);
   return ::fstatat(place.dirFd(), place.name.c_str(), &there, 0) == 0 && there.st_dev == own.st_dev &&
          there.st_ino == own.st_ino;
}

// An earlier table that still has its writer is not replaced under it.
void refuseWhenWritten(Place const& place) {
   OpenFile const file(place, O_RDWR);
   if (file.fd() >= 0 && S_ISREG(statusOf(file.fd()).st_mode) && !lockForWriting(file.fd())) {
      refuseFile(place.path, "has a writer already");
   }
}

void checkSizes(Place const& place, TableFile::Sizes sizes) {
   if (sizes.capacity == 0 || sizes.capacity > maxCapacity || sizes.arenaCapacity > maxArenaCapacity) {
      refuseFile(place.path,
                 "a table has 1 to " + std::to_string(maxCapacity) + " entries, not " + std::to_string(sizes.capacity));
   }
}

TableShape shapeOf(TableHeader const& header, U32 slotSize) noexcept {
   return {load(header.capacity), load(header.bucketCount), load(header.arenaCapacity), slotSize,
           load(header.elementSize)};
}

// Over what is written once.
U64 sumOfHeader(TableHeader const& header) noexcept {
   std::array<U64, offsetof(TableHeader, sum) / sizeof(U64)> words{};
   copyWords(words.data(), &header.magic, words.size());
   return sumWords(words.data() + 1, words.size() - 1);
}

U64 randomNumber() {
   U64 number = 0;
   if (::getrandom(&number, sizeof(number), 0) != sizeof(number)) {
      throw std::system_error(errno, std::generic_category(), "cannot be scattered");
   }
   return number;
}

void numbersAre(TableHeader& header, RecordLayout const& layout, TableFile::Sizes sizes) {
   header.version = layoutVersion;
   header.recordSize = layout.recordSize;
   header.recordHash = layout.hash;
   header.capacity = sizes.capacity;
   header.bucketCount = std::bit_ceil(sizes.capacity);
   header.arenaCapacity = sizes.arenaCapacity;
   header.elementSize = layout.elementSize;
   header.seed = randomNumber();
   header.sum = sumOfHeader(header);
   for (U64 TableHeader::*number : {&TableHeader::highWater, &TableHeader::live, &TableHeader::structure,
                                    &TableHeader::population, &TableHeader::succeeded}) {
      header.*number = Twice::of(0);
   }
}

void writeAt(int fd, void const* from, std::size_t bytes) {
   if (::pwrite(fd, from, bytes, 0) != static_cast<ssize_t>(bytes)) {
      throw std::system_error(errno, std::generic_category(), "cannot be written");
   }
}

void fillFile(int fd, TableHeader const& header, U64 bytes) {
   if (int const error = ::posix_fallocate(fd, 0, static_cast<off_t>(bytes)); error != 0) {
      throw std::system_error(error, std::generic_category(), "cannot be written");
   }
   writeAt(fd, &header, sizeof(header));
   // Last: the file is a table from here on.
   writeAt(fd, &tableMagic, sizeof(tableMagic));
}

std::atomic<bool (*)() noexcept> interruptedNow{nullptr};
std::atomic<void (*)(std::string_view)> damageReporter{nullptr};

}  // namespace

int Place::dirFd() const noexcept {
   return dir ? dir->fd() : AT_FDCWD;
}

TableFile TableFile::openReader(Place place, RecordLayout const& layout) {
   OpenFile const file(place, O_RDONLY);
   return TableFile(std::move(place), file.fd(), layout, false);
}

TableFile TableFile::openWriter(Place place, RecordLayout const& layout) {
   while (true) {
      OpenFile const file(place, O_RDWR);
      if (file.fd() < 0) {
         refuseForErrno(place.path, "cannot be opened");
      }
      if (S_ISREG(statusOf(file.fd()).st_mode) && !lockForWriting(file.fd())) {
         refuseFile(place.path, "has a writer already");
      }
      if (isInPlace(place, file.fd())) {  // it was not replaced before it was locked
         return TableFile(std::move(place), file.fd(), layout, true);
      }
   }
}

TableFile TableFile::create(Place place, RecordLayout const& layout, Sizes sizes, When when) {
   checkSizes(place, sizes);
   if (when == When::now) {
      refuseWhenWritten(place);
   }
   TableHeader header{};
   header.id = place.id;
   return made(std::move(place), layout, sizes, header);
}

TableFile TableFile::successor(RecordLayout const& layout, Sizes sizes) const {
   checkSizes(place_, sizes);
   TableHeader header{};
   header.id = view_.id;
   header.generation = view_.generation + 1;
   return made(place_, layout, sizes, header);
}

TableFile TableFile::made(Place place, RecordLayout const& layout, Sizes sizes, TableHeader header) {
   return forFile(place.path, [&] {
      numbersAre(header, layout, sizes);
      auto file = std::make_unique<Zam::NewFile>(place.dirFd(), place.name);
      lockForWriting(file->fd());
      fillFile(file->fd(), header, shapeOf(header, layout.slotSize).fileSize());
      TableFile table(std::move(place), file->fd(), layout, true);
      table.unplaced_ = std::move(file);
      return table;
   });
}

void TableFile::putInPlace() {
   forFile(place_.path, [this] { unplaced_->putInPlace(); });
   unplaced_.reset();
}

void TableFile::exchange(TableFile& other) noexcept {
   std::swap(view_, other.view_);
   std::swap(unplaced_, other.unplaced_);
}

TableFile::TableFile(Place place, int fd, RecordLayout const& layout, bool writable) : place_(std::move(place)) {
   if (fd < 0) {
      refuseForErrno(place_.path, "cannot be opened");
   }
   auto const status = statusOf(fd);
   if (!S_ISREG(status.st_mode)) {
      refuse("is not a file");
   }
   auto const bytes = static_cast<U64>(status.st_size);
   if (bytes < sizeof(TableHeader)) {
      refuse("is too short for a table, " + std::to_string(bytes) + " bytes");
   }
   view_.device = status.st_dev;
   view_.inode = status.st_ino;
   view_.mapping = forFile(place_.path, [&] { return GuardedMapping(fd, bytes, writable); });
   validate(layout);
}

TableFile::TableFile(TableFile&& other) noexcept = default;
TableFile::~TableFile() = default;

void TableFile::validate(RecordLayout const& layout) {
   TableHeader const& found = header();
   if (load(found.magic, std::memory_order_acquire) != tableMagic) {
      refuse("is not a table, the magic number is missing");
   }
   if (U32 const version = load(found.version); version != layoutVersion) {
      refuse("layout version " + std::to_string(version) + ", this program needs " + std::to_string(layoutVersion));
   }
   if (load(found.sum) != sumOfHeader(found)) {
      refuse("has a damaged header");
   }
   if (load(found.recordHash) != layout.hash || load(found.recordSize) != layout.recordSize ||
       load(found.elementSize) != layout.elementSize) {
      refuse("holds other records than " + std::string(layout.name) + " as this program knows it");
   }
   view_.id = {load(found.id.load), load(found.id.table)};
   if (place_.id.table != 0 && view_.id.table != place_.id.table) {
      refuse("is another table than the one of this place");
   }
   if (place_.id.load != 0 && view_.id.load != place_.id.load) {
      refuse("is of another load than its state");
   }
   view_.seed = load(found.seed);
   view_.generation = load(found.generation);
   validateShape(shapeOf(found, layout.slotSize));
}

void TableFile::validateShape(TableShape const& shape) {
   if (shape.capacity == 0 || shape.capacity > maxCapacity || shape.arenaCapacity > maxArenaCapacity ||
       shape.bucketCount != std::bit_ceil(shape.capacity)) {
      refuse("impossible capacity " + std::to_string(shape.capacity) + " with " + std::to_string(shape.bucketCount) +
             " buckets and room for " + std::to_string(shape.arenaCapacity) + " elements");
   }
   if (U64 const bytes = view_.mapping.bytes(); bytes < shape.fileSize()) {
      refuse("is cut short, " + std::to_string(bytes) + " of " + std::to_string(shape.fileSize()) + " bytes");
   }
   auto const* const base = view_.mapping.base();
   view_.shape = shape;
   view_.buckets = reinterpret_cast<U32 const*>(base + shape.bucketOffset());
   view_.slots = base + shape.slotOffset();
   view_.arena = base + shape.arenaOffset();
}

void TableFile::refuse(std::string const& why) const {
   refuseFile(place_.path, why);
}

bool TableFile::isThis(int fd) const noexcept {
   auto const status = statusOf(fd);
   return fd >= 0 && status.st_dev == view_.device && status.st_ino == view_.inode;
}

bool TableFile::hasWriter() const noexcept {
   OpenFile const file(place_, O_RDONLY);
   auto lock = wholeFile(F_RDLCK);
   return isThis(file.fd()) && ::fcntl(file.fd(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// The mark goes in before the other file is in its place. What is found there and is no later file of this table
// belongs to another state; this one has then seen its last change.
void TableFile::goOver(RecordLayout const& layout) const {
   OpenFile const file(place_, O_RDONLY);
   if (isThis(file.fd())) {
      return;
   }
   isLast_ = true;
   try {
      TableFile next(place_, file.fd(), layout, false);
      if (next.view_.id == view_.id && next.view_.generation > view_.generation) {
         std::swap(view_, next.view_);
         givenUp_.clear();
         isLast_ = false;
      }
   } catch (MountError const&) {
   }
}

std::byte const* TableFile::elementsAt(U32 first, U32 count) const noexcept {
   if (first > view_.shape.arenaCapacity || count > view_.shape.arenaCapacity - first) {
      return nullptr;
   }
   return view_.arena + U64{first} * view_.shape.elementSize;
}

std::string_view TableFile::textOf(Fault fault) noexcept {
   constexpr std::array<std::string_view, 3> texts{"damaged numbers in the header", "the index was left in pieces",
                                                   "was cut short while it was in use"};
   return texts[static_cast<std::size_t>(fault)];
}

void TableFile::reportOnce(Fault fault) const {
   auto const bit = static_cast<U8>(1U << static_cast<unsigned>(fault));
   if ((reported_ & bit) == 0) {
      reported_ |= bit;
      corruptionIs(path() + ": " + std::string(textOf(fault)));
   }
}

void TableFile::corruptionIs(std::string_view message) const {
   ++corruptions_;
   corruption_ = message;
   if (hook_) {
      hook_(message);
   } else if (auto const reporter = damageReporter.load(std::memory_order_relaxed); reporter != nullptr) {
      reporter(message);
   } else {
      trace(0, "corruptionIs", message);
   }
}

void TableFile::corrupted(std::string_view what) const {
   throw CorruptionError(path() + ": " + std::string(what));
}

void TableFile::corrupted(std::string_view what, U64 value) const {
   corrupted(std::string(what) + " " + std::to_string(value));
}

void TableFile::vanishedInc() const {
   constexpr U64 manyReports = 1000;
   if (++vanished_ <= manyReports) {
      corruptionIs(path() + ": an entry was left half written");
   }
}

namespace {

constexpr std::size_t maxGivenUp = 1000;
constexpr U64 maxScanned = U64{1} << 22U;

}  // namespace

bool TableFile::isGivenUp(U32 bucket) const noexcept {
   return !givenUp_.empty() && (givenUp_.size() >= maxGivenUp || std::ranges::binary_search(givenUp_, bucket));
}

void TableFile::giveUp(U32 bucket, U32 steps) const {
   stepsInVain_ += steps;
   givenUp_.insert(std::ranges::upper_bound(givenUp_, bucket), bucket);
}

bool TableFile::mayScan(U32 slots) const noexcept {
   if (scanned_ + slots > maxScanned) {
      return false;
   }
   scanned_ += slots;
   stepsInVain_ += slots;
   return true;
}

void TableFile::interruptedIs(bool (*interrupted)() noexcept) noexcept {
   interruptedNow.store(interrupted);
}

void TableFile::damageReporterIs(void (*reporter)(std::string_view)) noexcept {
   damageReporter.store(reporter);
}

void TableFile::Wait::ended() const noexcept {
   file_.stepsInVain_ += rounds_;
   if (!inVain_) {
      file_.waitsInVain_ = 0;
   }
}

// Most waits end within a few rounds: an entry is being written for nanoseconds. A writer that lost its processor in
// the middle comes back within milliseconds; one that ended there never does.
bool TableFile::Wait::again() noexcept {
   constexpr U32 spins = 100;
   constexpr U32 maxNaps = 2000;
   constexpr U32 checkEvery = 20;
   constexpr U64 manyInVain = 1000;
   constexpr std::chrono::microseconds nap(50);
   ++rounds_;
   if (rounds_ <= spins && file_.waitsInVain_ < manyInVain) {
      return true;
   }
   auto const interrupted = interruptedNow.load(std::memory_order_relaxed);
   if (file_.waitsInVain_ != 0 || writerGone_ || rounds_ > spins + maxNaps ||
       (interrupted != nullptr && interrupted())) {
      inVain_ = true;
      ++file_.waitsInVain_;
      return false;
   }
   if (rounds_ % checkEvery == 1 && !file_.hasWriter()) {
      // It may have finished the entry before it went: one more look.
      writerGone_ = true;
      return true;
   }
   std::this_thread::sleep_for(nap);
   return true;
}

}  // namespace Vault
