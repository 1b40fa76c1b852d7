#include "Hive/EntityManager.h"

#include "FlexCounters/CounterTable.h"
#include "NexthopGroup/EntryStatus.h"
#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/RouteStatus.h"
#include "Vault/UnprogrammedRouteStatus.h"

#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <unistd.h>

namespace Hive {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view stampName = "hive.json";
constexpr std::string_view stampHead = "{\"stateVersion\": ";

std::string stampText() {
   return std::string(stampHead) + std::to_string(EntityManager::stateVersion) + "}\n";
}

// The version that the stamp's text names; 0 when it is no stamp.
U32 stampVersion(std::string_view text) noexcept {
   U32 version = 0;
   if (text.starts_with(stampHead)) {
      text.remove_prefix(stampHead.size());
      std::from_chars(text.data(), text.data() + text.size(), version);
   }
   return version;
}

bool isFile(fs::path const& path) {
   std::error_code error;
   return fs::exists(path, error);
}

void checkStateDir(std::string const& stateDir) {
   std::error_code error;
   auto const status = fs::status(stateDir, error);
   if (!fs::exists(status)) {
      throw StateError(stateDir + ": no such state directory");
   }
   if (!fs::is_directory(status)) {
      throw StateError(stateDir + ": is not a directory");
   }
   std::ifstream stamp(fs::path(stateDir) / stampName);
   std::string line;
   if (!std::getline(stamp, line)) {
      throw StateError(stateDir + ": is not a state directory, it has no " + std::string(stampName));
   }
   if (U32 const version = stampVersion(line); version != EntityManager::stateVersion) {
      throw StateError(stateDir + ": state version " + std::to_string(version) + ", this program needs " +
                       std::to_string(EntityManager::stateVersion));
   }
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

EntityManager::EntityManager(std::string stateDir) : stateDir_(std::move(stateDir)) {
   checkStateDir(stateDir_);
}

void EntityManager::stateDirIs(std::string const& stateDir) {
   std::error_code error;
   fs::create_directories(stateDir, error);
   fs::path const stamp = fs::path(stateDir) / stampName;
   if (!error && !isFile(stamp)) {
      fs::path const beside = stamp.string() + ".new." + std::to_string(::getpid());
      std::ofstream(beside) << stampText();
      fs::rename(beside, stamp, error);
   }
   if (error) {
      throw StateError(stateDir + ": cannot be made a state directory: " + error.message());
   }
}

std::string_view EntityManager::fwkType() const noexcept {
   return "Hive::EntityManager";
}

bool EntityManager::exists(std::string_view path) const {
   return isFile(fileOf(path));
}

std::string EntityManager::fileOf(std::string_view path) const {
   if (!isPathBelow(path)) {
      throw StateError(stateDir_ + ": \"" + std::string(path) + "\" is not a path below it");
   }
   return (fs::path(stateDir_) / path).string();
}

std::string EntityManager::fileToCreate(std::string_view path) const {
   std::string file = fileOf(path);
   std::error_code error;
   fs::create_directories(fs::path(file).parent_path(), error);
   if (error) {
      throw StateError(file + ": its directory cannot be made: " + error.message());
   }
   return file;
}

EntityManager::Beside::Beside(std::string place)
    : place_(std::move(place)),
      file_(place_ + ".new." + std::to_string(::getpid())) {}

EntityManager::Beside::~Beside() {
   std::error_code ignored;
   fs::remove(file_, ignored);
}

void EntityManager::Beside::putInPlace() const {
   std::error_code error;
   fs::rename(file_, place_, error);
   if (error) {
      throw StateError(place_ + ": cannot be replaced: " + error.message());
   }
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
