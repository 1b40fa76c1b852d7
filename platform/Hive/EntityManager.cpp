#include "Hive/EntityManager.h"

#include "FlexCounters/CounterTable.h"
#include "NexthopGroup/EntryStatus.h"
#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/RouteStatus.h"
#include "Vault/UnprogrammedRouteStatus.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <system_error>

namespace Hive {

namespace {

constexpr char const* stampName = "hive.json";

// What the stamp says; zeros when it is none.
struct Stamp {
   U32 version = 0;
   U64 load = 0;

   std::string text() const {
      return "{\"stateVersion\": " + std::to_string(version) + ", \"load\": " + std::to_string(load) + "}\n";
   }
};

template <class Number>
void readNumber(std::string_view text, std::string_view name, Number& number) noexcept {
   if (auto const at = text.find(name); at != std::string_view::npos) {
      text.remove_prefix(at + name.size());
      std::from_chars(text.data(), text.data() + text.size(), number);
   }
}

// Anything that is no file has no text; nobody waits for it.
std::string textOf(int dir, char const* name) {
   std::array<char, 200> buffer{};
   int const fd = ::openat(dir, name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
   ssize_t const size = fd >= 0 ? ::read(fd, buffer.data(), buffer.size()) : 0;
   if (fd >= 0) {
      ::close(fd);
   }
   return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

Stamp stampOf(std::string_view text) noexcept {
   Stamp stamp;
   readNumber(text, "\"stateVersion\": ", stamp.version);
   readNumber(text, "\"load\": ", stamp.load);
   return stamp;
}

U64 randomLoad() {
   U64 load = 0;
   (void)::getrandom(&load, sizeof(load), 0);
   return (load >> 11U) + 1;  // whole in any JSON reader
}

std::shared_ptr<Zam::Directory const> openStateDir(std::string const& stateDir) {
   try {
      return std::make_shared<Zam::Directory const>(stateDir);
   } catch (std::system_error const& error) {
      switch (error.code().value()) {
         case ENOENT:
            throw StateError(stateDir + ": no such state directory");
         case ENOTDIR:
            throw StateError(stateDir + ": is not a directory");
         default:
            throw StateError(stateDir + ": " + error.what());
      }
   }
}

// Directories that nobody else may write, whatever the umask. False, and errno, when one is missing in the end.
bool directoriesAbove(int dir, std::string const& path) {
   for (auto slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
      if (::mkdirat(dir, path.substr(0, slash).c_str(), 0755) != 0 && errno != EEXIST) {
         return false;
      }
   }
   return true;
}

bool isPathBelow(std::string_view path) noexcept {
   while (true) {
      auto const slash = path.find('/');
      auto const name = path.substr(0, slash);
      if (name.empty() || name == "." || name == ".." || name.find('\0') != std::string_view::npos) {
         return false;
      }
      if (slash == std::string_view::npos) {
         return true;
      }
      path.remove_prefix(slash + 1);
   }
}

using Entity = Zam::Ptr<Zam::PtrInterface const>;
struct TableType {
   std::string_view name;
   Entity (*mount)(EntityManager const& manager, std::string_view path);
};

template <class T>
constexpr TableType tableType(std::string_view name) {
   return {name, [](EntityManager const& manager, std::string_view path) { return Entity(manager.mount<T>(path)); }};
}

constexpr auto tableTypes = std::to_array<TableType>({
    tableType<Vault::Fib::RouteStatus>("Vault::Fib::RouteStatus"),
    tableType<Vault::Fib6::RouteStatus>("Vault::Fib6::RouteStatus"),
    tableType<Vault::Fib::ForwardingStatus>("Vault::Fib::ForwardingStatus"),
    tableType<Vault::Fib6::ForwardingStatus>("Vault::Fib6::ForwardingStatus"),
    tableType<Vault::FibGen::ForwardingStatus>("Vault::FibGen::ForwardingStatus"),
    tableType<Vault::Fib::UnprogrammedRouteStatus>("Vault::Fib::UnprogrammedRouteStatus"),
    tableType<Vault::KernelUnprogrammedRoute::UnprogrammedRoute>("Vault::KernelUnprogrammedRoute::UnprogrammedRoute"),
    tableType<NexthopGroup::EntryStatus>("NexthopGroup::EntryStatus"),
    tableType<Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable>(
        "Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable"),
    tableType<FlexCounters::CounterTable>("FlexCounters::CounterTable"),
});

}  // namespace

StateError::~StateError() = default;

EntityManager::EntityManager(std::string stateDir) : stateDir_(std::move(stateDir)), dir_(openStateDir(stateDir_)) {
   std::string const text = textOf(dir_->fd(), stampName);
   if (text.empty()) {
      throw StateError(stateDir_ + ": is not a state directory, it has no " + stampName);
   }
   Stamp const stamp = stampOf(text);
   if (stamp.version != stateVersion) {
      throw StateError(stateDir_ + ": state version " + std::to_string(stamp.version) + ", this program needs " +
                       std::to_string(stateVersion));
   }
   load_ = stamp.load;
}

void EntityManager::stateDirIs(std::string const& stateDir) {
   try {
      if (!directoriesAbove(AT_FDCWD, stateDir + "/")) {
         throw std::system_error(errno, std::generic_category());
      }
      Zam::Directory const dir(stateDir);
      if (textOf(dir.fd(), stampName).empty()) {
         Zam::NewFile stamp(dir.fd(), stampName);
         stamp.append(Stamp{stateVersion, randomLoad()}.text());
         stamp.putInPlace();
      }
   } catch (std::system_error const& error) {
      throw StateError(stateDir + ": cannot be made a state directory: " + error.code().message());
   }
}

std::string_view EntityManager::fwkType() const noexcept {
   return "Hive::EntityManager";
}

bool EntityManager::exists(std::string_view path) const {
   Vault::Place const place = placeOf(path);
   struct stat status {};
   if (::fstatat(place.dirFd(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
      return true;
   }
   if (errno != ENOENT) {
      int const error = errno;
      throw Vault::MountError(place.path + ": cannot be opened: " + std::strerror(error));
   }
   return false;
}

bool EntityManager::isBeingWritten(std::string_view path) const {
   Vault::Place const place = placeOf(path);
   int const fd = ::openat(place.dirFd(), place.name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
   struct flock lock {};
   lock.l_type = F_RDLCK;
   bool const busy = fd >= 0 && ::fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
   ::close(fd);
   return busy;
}

Vault::Place EntityManager::placeOf(std::string_view path) const {
   if (!isPathBelow(path)) {
      throw StateError(stateDir_ + ": \"" + std::string(path) + "\" is not a path below it");
   }
   return {dir_, std::string(path), stateDir_ + "/" + std::string(path), {load_, Vault::hashText(path)}};
}

Vault::Place EntityManager::placeToCreate(std::string_view path) const {
   Vault::Place place = placeOf(path);
   if (!directoriesAbove(place.dirFd(), place.name)) {
      int const error = errno;
      throw StateError(place.path + ": its directory cannot be made: " + std::strerror(error));
   }
   return place;
}

Zam::Ptr<Zam::PtrInterface const> EntityManager::mountEntity(std::string_view path, std::string_view typeName) const {
   for (TableType const& type : tableTypes) {
      if (type.name == typeName) {
         return type.mount(*this, path);
      }
   }
   throw StateError(stateDir_ + ": there are no tables of type " + std::string(typeName));
}

}  // namespace Hive
