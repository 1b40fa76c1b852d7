#pragma once

#include "Vault/Fib.h"
#include "Vault/Records.h"
#include "Vault/TableEntity.h"

#include <optional>
#include <type_traits>

// The route tables of the FIB, one table per VRF and family, keyed by prefix.
namespace Vault {

// Reads a route table. Routes have no order in it.
template <class Route, class Record, template <TableRecord> class Core = Table>
class RouteTable : public TableEntity<Core<Record>> {
 public:
   using TableEntity<Core<Record>>::TableEntity;
   using RouteType = Route;
   using Prefix = decltype(Route::prefix);

   U64 routes() const { return this->core_.live(); }

   // Nothing when there is no such route. CorruptionError when the index is broken.
   std::optional<Route> route(Prefix const& prefix) const {
      Record record;
      if (!this->core_.find(Records::toKey(prefix), record)) {
         return std::nullopt;
      }
      if (!record.isWhole()) {
         this->core_.file().corrupted("damaged route, prefix length", record.key.length);
      }
      return decoded(record);
   }

   // Calls `visit(Route const&)` for every route, until it returns false if it returns anything. A route that stays is
   // visited once; an impossible one is reported through the corruption hook and left out.
   template <class Visit>
   void walk(Visit&& visit) const {
      this->core_.walk([&](Record const& record) { return visit(decoded(record)); });
   }

 private:
   Route decoded(Record const& record) const {
      if (!record.isPossible()) [[unlikely]] {
         this->core_.file().corrupted("damaged route, prefix length", record.key.length);
      }
      return Records::toRoute<Route>(record);
   }
};

// Writes a route table, and reads it.
template <class Route, class Record>
class RouteTableWriter : public RouteTable<Route, Record, TableWriter> {
 public:
   using Base = RouteTable<Route, Record, TableWriter>;
   using Base::Base;

   // Adds the route or replaces the one of its prefix. TableFull when there is no room; RangeError for the null prefix.
   void routeIs(Route const& route) {
      if (route.prefix.isNullPrefix()) {
         throw Zam::RangeError("Vault::Fib::Route::prefix == nullPrefix not allowed");
      }
      this->core_.recordIs(Records::toRecord<Record>(route));
   }
   // False when there was none.
   bool routeDel(decltype(Route::prefix) const& prefix) { return this->core_.recordDel(Records::toKey(prefix)); }
   // Entries that the writer before this one had left unfinished.
   U32 repaired() const noexcept { return this->core_.repaired(); }
};

namespace Fib {

class KIV_EXPORT RouteStatus final : public RouteTable<Route, Records::RouteRecord4> {
 public:
   using RouteTable::RouteTable;
   std::string_view fwkType() const noexcept override { return "Vault::Fib::RouteStatus"; }
};

class KIV_EXPORT RouteStatusWriter final : public RouteTableWriter<Route, Records::RouteRecord4> {
 public:
   using RouteTableWriter::RouteTableWriter;
   std::string_view fwkType() const noexcept override { return "Vault::Fib::RouteStatusWriter"; }
};

}  // namespace Fib

namespace Fib6 {

class KIV_EXPORT RouteStatus final : public RouteTable<Route, Records::RouteRecord6> {
 public:
   using RouteTable::RouteTable;
   std::string_view fwkType() const noexcept override { return "Vault::Fib6::RouteStatus"; }
};

class KIV_EXPORT RouteStatusWriter final : public RouteTableWriter<Route, Records::RouteRecord6> {
 public:
   using RouteTableWriter::RouteTableWriter;
   std::string_view fwkType() const noexcept override { return "Vault::Fib6::RouteStatusWriter"; }
};

}  // namespace Fib6

}  // namespace Vault
