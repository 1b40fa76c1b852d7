#pragma once

#include "Routing/RouteType.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <optional>
#include <string_view>

// The strings that stand for a route type: in the route table, in the model, in the user's protocol filter, in the
// route summary and in the host route table. The tables are constants, ordered by the numeric type, and readable from
// any thread.
namespace Kiv {

struct RouteTypeStrings {
   char const* code = "";             // in the route table, one to four characters; empty for types that have none
   char const* modelWord = "";        // in the model
   char const* protocolCode = "";     // what a protocol filter is compared with
   char const* summaryCategory = "";  // the key under which the route summary counts
   // In the host route table. A connected route's own address keeps the letter R of what the box receives, though its
   // word is FIB; scripts rely on the pair as it is.
   char hostCode = 'F';
   char const* hostWord = "FIB";
};

// The largest type value of each family's table; a few values below it have no entry.
inline constexpr U8 maxRouteType = 44;
inline constexpr U8 maxRoute6Type = 31;

// Null for a type without an entry, which a damaged table can hold; what shows a type filters such types first.
KIV_EXPORT RouteTypeStrings const* routeTypeStringsFind(Routing::Fib::RouteType type) noexcept;
KIV_EXPORT RouteTypeStrings const* routeTypeStringsFind(Routing6::Fib::RouteType type) noexcept;

// A type without an entry fails an assertion.
KIV_EXPORT RouteTypeStrings const& routeTypeStringsLookup(Routing::Fib::RouteType type);
KIV_EXPORT RouteTypeStrings const& routeTypeStringsLookup(Routing6::Fib::RouteType type);

template <class RouteType>
char const* pcode(RouteType type) {
   return routeTypeStringsLookup(type).code;
}

template <class RouteType>
char const* pcodeAsWord(RouteType type) {
   return routeTypeStringsLookup(type).modelWord;
}

// Whether a route passes the protocol filter: an empty filter passes every route, any other must equal the protocol
// code.
template <class Route>
bool protocolMatch(Route const& route, std::string_view protocol) {
   return protocol.empty() || protocol == routeTypeStringsLookup(route.routeType).protocolCode;
}

// The letter and the word of a type in the host route table, also of a type without an entry.
KIV_EXPORT char hcode(Routing::Fib::RouteType type) noexcept;
KIV_EXPORT char hcode(Routing6::Fib::RouteType type) noexcept;
KIV_EXPORT char const* hcodeWord(Routing::Fib::RouteType type) noexcept;
KIV_EXPORT char const* hcodeWord(Routing6::Fib::RouteType type) noexcept;

// The RIB's route types. A value outside the enumeration fails an assertion.
KIV_EXPORT char const* ribRouteType(Routing::RouteType type);
KIV_EXPORT char const* ribRouteTypeCode(Routing::RouteType type);

}  // namespace Kiv
