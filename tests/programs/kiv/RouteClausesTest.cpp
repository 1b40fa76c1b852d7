#include "programs/kiv/RouteClauses.h"

#include "Kiv/common/RouteTypeStrings.h"
#include "state/RouteTypeNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace kiv {
namespace {

template <class RouteType>
std::set<std::string> protocolCodes() {
   std::set<std::string> codes;
   for (auto const& [type, name] : state::routeTypeNames<RouteType>) {
      if (auto const* const strings = Kiv::routeTypeStringsFind(type)) {
         codes.insert(strings->protocolCode);
      }
   }
   codes.erase("");  // of routes that are never shown
   return codes;
}

std::set<std::string> codesOfWords(std::span<Clause const> clauses) {
   std::set<std::string> codes;
   auto const clause = std::ranges::find(clauses, routeClause::protocol, &Clause::name);
   for (Word const& word : clause->words) {
      codes.emplace(word.value);
   }
   return codes;
}

// The library compares codes; users can reach every one of them by a word, and no word asks for what cannot be.
TEST(RouteClauses, ProtocolWordsAreThoseOfTheFamilysRoutes) {
   EXPECT_EQ(codesOfWords(ipRouteClauses()), protocolCodes<Routing::Fib::RouteType>());
   EXPECT_EQ(codesOfWords(ipv6RouteClauses()), protocolCodes<Routing6::Fib::RouteType>());
}

// A word that is also a keyword, or the same twice, could never be meant.
TEST(RouteClauses, NoTwoWordsAreTheSame) {
   for (auto const clauses : {ipRouteClauses(), ipv6RouteClauses()}) {
      std::set<std::string_view> seen;
      for (Clause const& clause : clauses) {
         EXPECT_TRUE(seen.insert(clause.name()).second) << clause.name();
         for (Word const& word : clause.words) {
            EXPECT_TRUE(seen.insert(word.word).second) << word.word;
         }
         for (std::string_view const name : clause.needs) {
            EXPECT_TRUE(std::ranges::count(clauses, name, &Clause::name)) << name;
         }
      }
   }
}

}  // namespace
}  // namespace kiv
