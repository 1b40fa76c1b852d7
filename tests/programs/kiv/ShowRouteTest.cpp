#include "support/StrictJson.h"
#include "tests/programs/kiv/ProgramRun.h"

#include <gtest/gtest.h>

namespace {

using testsupport::casesOf;
using testsupport::Finished;
using testsupport::JsonValue;
using testsupport::ProgramRun;
using testsupport::StrictJson;

// The next hops and interfaces of vias, those that a via resolves through behind it.
std::string viasOf(JsonValue const& vias) {
   std::string result;
   for (auto const& [key, via] : vias.members) {
      if (auto const* const hop = via.find("nexthopAddr")) {
         auto const* const interface = via.find("interface");
         result.append("@" + hop->text + '%' + (interface != nullptr ? interface->text : "none"));
      }
      auto const* const resolved = via.find("resolvedVias");
      result.append(resolved != nullptr ? viasOf(*resolved) : "");
   }
   return result;
}

// The routes of a document, with the next hops and interfaces of their vias when asked: "10.0.0.0/8 10.1.0.0/16", or
// for several VRFs "default: 10.0.0.0/8 | red:".
std::string routesOf(std::string const& text, bool withVias) {
   auto const document = StrictJson::parse(text);
   auto const* const vrfs = document ? document->find("vrfs") : nullptr;
   if (vrfs == nullptr) {
      return "no document: " + text;
   }
   std::string result;
   for (auto const& [name, vrf] : vrfs->members) {
      std::string line = vrfs->members.size() > 1 ? name + ':' : "";
      for (auto const& [prefix, route] : vrf.find("routes")->members) {
         line.append(line.empty() ? "" : " ").append(prefix);
         line.append(withVias ? viasOf(*route.find("vias")) : "");
      }
      result.append(result.empty() ? "" : " | ").append(line);
   }
   return result;
}

class ShowRoute : public testing::Test {
 protected:
   // A box that is small enough to know by heart: who shares a FEC, and what only a filter tells apart.
   ShowRoute() {
      EXPECT_EQ(run_("$KIV load '" KIV_SOURCE_DIR "/tests/programs/kiv/box.json' --state $DIR/s").status, 0);
   }

   Finished show(std::string const& line, std::string const& options = "") const {
      return run_("$KIV --state $DIR/s " + options + " show " + line);
   }
   std::string routes(std::string const& line, bool withVias = false) const {
      Finished const finished = show(line, "--json");
      EXPECT_EQ(finished.err, "") << line;
      EXPECT_EQ(finished.status, 0) << line;
      return routesOf(finished.out, withVias);
   }

   ProgramRun run_;
};

TEST_F(ShowRoute, SelectsRoutesAndVias) {
   for (bool const withVias : {false, true}) {
      for (auto const& [line, expected] : casesOf(withVias ? "show: routes with their vias" : "show: routes")) {
         EXPECT_EQ(routes(line, withVias), expected) << line;
      }
   }
}

TEST_F(ShowRoute, SaysInTextWhatItShows) {
   for (auto const& [line, expected] : casesOf("show: text")) {
      EXPECT_NE(show(line).out.find('\n' + expected + '\n'), std::string::npos) << line << show(line).out;
   }
}

TEST_F(ShowRoute, RefusesInOneLine) {
   for (auto const& [line, refusal] : casesOf("show: refusals")) {
      for (char const* const options : {"", "--json"}) {
         Finished const finished = show(line, options);
         EXPECT_EQ(std::to_string(finished.status) + ' ' + finished.err, refusal + '\n') << line;
         EXPECT_EQ(finished.out, "") << line;
      }
   }
}

}  // namespace
