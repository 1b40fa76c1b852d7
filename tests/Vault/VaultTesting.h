#pragma once

#include "Vault/ForwardingStatus.h"
#include "Vault/RouteStatus.h"
#include "support/Testing.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace Vault::Testing {

using testsupport::complaintOf;
using testsupport::TempDir;

class TableTest : public ::testing::Test {
 protected:
   TempDir dir_;
   std::string const path_ = dir_ / "table";
};

// Overwrites bytes of a file the way a fault would.
template <class T>
void patch(std::string const& path, U64 offset, T value, std::size_t bytes = sizeof(T)) {
   std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
   file.seekp(static_cast<std::streamoff>(offset));
   file.write(reinterpret_cast<char const*>(&value), static_cast<std::streamsize>(bytes));
   ASSERT_TRUE(file.good()) << path;
}

template <class T>
T peek(std::string const& path, U64 offset) {
   std::ifstream file(path, std::ios::binary);
   file.seekg(static_cast<std::streamoff>(offset));
   T value{};
   file.read(reinterpret_cast<char*>(&value), sizeof(value));
   return value;
}

// The file's shape, from its header.
template <TableRecord Record>
TableShape shapeOf(std::string const& path) {
   auto const header = peek<TableHeader>(path, 0);
   return {header.capacity, header.bucketCount, header.arenaCapacity, sizeof(Slot<Record>), header.elementSize};
}

template <TableRecord Record>
U64 slotOffset(std::string const& path, U32 index) {
   return shapeOf<Record>(path).slotOffset() + U64{index} * sizeof(Slot<Record>);
}

// The same numbers in every run.
class Random {
 public:
   explicit Random(U32 seed) : engine_(seed) {}
   U32 number() { return static_cast<U32>(engine_()); }
   U32 below(U32 end) { return number() % end; }

 private:
   std::mt19937 engine_;
};

// Another process that runs `work` over and over until it is stopped, wherever it is then.
class OtherProcess {
 public:
   template <class Work>
   explicit OtherProcess(Work const& work) : pid_(::fork()) {
      if (pid_ == 0) {
         [&]() noexcept { work(); }();
         ::_exit(0);
      }
   }
   OtherProcess(OtherProcess const&) = delete;
   OtherProcess& operator=(OtherProcess const&) = delete;
   ~OtherProcess() { stop(); }
   // Whether it was still at work.
   bool stop() {
      if (pid_ <= 0) {
         return false;
      }
      ::kill(pid_, SIGKILL);
      int status = 0;
      ::waitpid(std::exchange(pid_, 0), &status, 0);
      return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
   }

 private:
   pid_t pid_;
};

// Changes one of `all` entries. Those below `staying` never go; the others come and go, and take each other's places.
template <class Put, class Drop>
void changeOne(Random& random, U32 staying, U32 all, Put&& put, Drop&& drop) {
   U32 const i = random.below(all);
   i < staying || random.below(2) == 0 ? put(i) : drop(i);
}

inline bool within(std::chrono::steady_clock::time_point start, std::chrono::milliseconds limit) {
   return std::chrono::steady_clock::now() - start < limit;
}

struct Ip4Routes {
   using Writer = Fib::RouteStatusWriter;
   using Reader = Fib::RouteStatus;
   using Record = Records::RouteRecord4;
   using Route = Fib::Route;
   static constexpr std::string_view recordName = "Vault::Fib::Route";
   static Lumen::Prefix prefix(U32 i) {
      auto const length = static_cast<U8>(12 + i % 21);
      return Lumen::Prefix::masked(Lumen::IpAddr(i * 0x9e3779b1U), length);
   }
   static Lumen::Prefix distinctPrefix(U32 i) { return {Lumen::IpAddr(0x0a000000U + i * 2), 31}; }
};

struct Ip6Routes {
   using Writer = Fib6::RouteStatusWriter;
   using Reader = Fib6::RouteStatus;
   using Record = Records::RouteRecord6;
   using Route = Fib6::Route;
   static constexpr std::string_view recordName = "Vault::Fib6::Route";
   static Lumen::Ip6Prefix prefix(U32 i) {
      auto const length = static_cast<U8>(i % 129);
      return Lumen::Ip6Prefix::masked(Lumen::Ip6Addr(U64{i} * 0x9e3779b97f4a7c15U, U64{i} << 40), length);
   }
   static Lumen::Ip6Prefix distinctPrefix(U32 i) { return {Lumen::Ip6Addr(0x20010db8ULL << 32, U64{i} << 1), 127}; }
};

using RouteFamilies = ::testing::Types<Ip4Routes, Ip6Routes>;

// A route all of whose members follow from one number, so that a mixture of two shows.
template <class Family>
typename Family::Route patternRoute(decltype(Family::Route::prefix) const& prefix, U32 version) {
   return {.prefix = prefix,
           .routeType = static_cast<decltype(Family::Route::routeType)>(version & 0xffU),
           .preference = static_cast<U8>(version >> 8U),
           .metric = version,
           .srcVrfId = ~version,
           .fecId = Fib::FecId(U64{version} * 0x100000001ULL)};
}

template <class Fec>
Fec patternFec(Fib::FecId fecId, U32 version, U32 vias) {
   Fec fec{.fecId = fecId, .primaryVias = static_cast<U16>(version), .vias = {}};
   for (U32 i = 0; i < vias; ++i) {
      U64 const mark = fecId.value() * 31 + U64{version} * 1000 + i;
      fec.vias.push_back({.intfId = i % 2 == 0 ? Lumen::IntfId::named("Ethernet" + std::to_string(version % 100000))
                                               : Lumen::IntfId::fromFecId(mark),
                          .hop = i % 3 == 0 ? Lumen::IpGenAddr(Lumen::IpAddr(version + i))
                                            : Lumen::IpGenAddr(Lumen::Ip6Addr(mark, ~mark)),
                          .label = Lumen::MplsLabel((version + i) & 0xfffffU),
                          .weight = static_cast<U16>(version % 1000 + 1),
                          .forwardingAction = static_cast<Fib::ForwardingAction>(version % 4),
                          .forwardingVrf = version,
                          .tunnelId = mark,
                          .fecId = Fib::FecId(~mark)});
   }
   return fec;
}

}  // namespace Vault::Testing
