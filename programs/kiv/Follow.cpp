#include "programs/kiv/Follow.h"

#include "programs/command/Age.h"
#include "programs/command/Errors.h"
#include "programs/command/Kinds.h"
#include "programs/command/Session.h"
#include "programs/follow/Follower.h"
#include "state/Snapshot.h"

#include <vector>

namespace kiv {
namespace {

struct FollowArguments {
   U32 audit = 60;
   U32 grace = 60;
};

// A line of JSON for each change.
void print(Session const& session, follow::Told const& told) {
   bool const isIp4 = told.prefix.family() == Lumen::AddressFamily::ipv4;
   ExitStatus const status =
       session.write("{\"time\":\"" + momentText(state::systemTime()) + "\",\"family\":\"" + (isIp4 ? "ipv4" : "ipv6") +
                     "\",\"vrf\":" + state::jsonQuoted(told.vrf) + ",\"prefix\":\"" + told.prefix.stringValue() +
                     "\",\"old\":" + told.before + ",\"new\":" + told.after + "}\n");
   if (status != ExitStatus::ok) {
      cliprint::interruptedIs(true);  // nobody reads it any more
   }
}

follow::FpmAddress fpmAddress(std::string const& word) {
   try {
      return word.empty() ? follow::FpmAddress() : follow::FpmAddress::parse(word);
   } catch (std::invalid_argument const& error) {
      throw UsageError('"' + word + "\": command line: " + error.what());
   }
}

ExitStatus followSource(Session& session, FollowArguments const& asked) {
   auto const& fpm = session.source().following.fpm;
   follow::Settings settings{.stateDir = session.stateDir("follow", "which directory is kept"),
                             .fpm = fpm ? std::optional(fpmAddress(*fpm)) : std::nullopt,
                             .grace = std::chrono::seconds(asked.grace),
                             .audit = std::chrono::seconds(asked.audit),
                             .tell = {},
                             .report = [&session](std::string_view line) { session.report(line); }};
   if (session.source().following.print) {
      settings.tell = [&session](follow::Told const& told) { print(session, told); };
   }
   follow::Follower(std::move(settings)).run();
   return ExitStatus::ok;
}

constexpr auto followClauses = clauses(
    clause<&FollowArguments::audit, Number<1, 86400>>(
        {.keyword = "audit", .help = "compare the tables with the kernel this often, in seconds; 60 unless said"}),
    clause<&FollowArguments::grace, Number<1, 86400>>(
        {.keyword = "grace",
         .help = "keep what a daemon that is back does not repeat so long, in seconds; 60 unless said"}));

// What is shown of a state, in both forms.
struct Fact {
   std::string_view name;   // in JSON
   std::string_view title;  // in text
   std::string json;
   std::string text;
};

class Facts {
 public:
   void add(std::string_view name, std::string_view title, std::string const& text) {
      facts_.push_back({name, title, state::jsonQuoted(text), text});
   }
   void add(std::string_view name, std::string_view title, U64 number) {
      facts_.push_back({name, title, std::to_string(number), std::to_string(number)});
   }
   void addMoment(std::string_view name, std::string_view title, U64 moment) {
      facts_.push_back({name, title, moment != 0 ? '"' + momentText(moment) + '"' : "null",
                        moment != 0 ? momentText(moment) + ", " + ageText(moment) + " ago" : "never"});
   }
   void addWriter(state::LiveState const& live) {
      std::string const pid = std::to_string(live.status.pid);
      facts_.push_back({"writer", "Kept by", live.isKept ? pid : "null",
                        live.isKept
                            ? "process " + pid
                            : "nobody, process " + pid + (live.status.stopped != 0 ? " has ended" : " was killed")});
   }

   std::string json() const {
      std::string out;
      for (Fact const& fact : facts_) {
         out += (out.empty() ? "{\"" : ",\"") + std::string(fact.name) + "\":" + fact.json;
      }
      return out + "}\n";
   }
   std::string text() const {
      std::string out;
      for (Fact const& fact : facts_) {
         out += std::string(fact.title) + ": " + fact.text + '\n';
      }
      return out;
   }

 private:
   std::vector<Fact> facts_;
};

void addFollower(Facts& facts, state::LiveState const& live) {
   state::LiveStatus const& status = live.status;
   facts.addWriter(live);
   facts.addMoment("since", "Since", status.started);
   if (!live.isKept) {
      facts.addMoment("until", "Until", status.lastSeen);
   }
   facts.addMoment("lastChange", "Last change", status.lastChange);
   facts.add("changes", "Changes applied", status.changes);
   facts.add("dumpsAgain", "Dumps read again", status.dumpsAgain);
   facts.add("audits", "Audits", status.audits);
   facts.add("drift", "Drift found", status.drift);
}

void addRoutes(Facts& facts, state::Inputs& inputs) {
   U64 routes = 0;
   U64 routes6 = 0;
   for (auto const& vrf : inputs.vrfs()) {
      routes += inputs.routes(vrf.id)->routes();
      routes6 += inputs.routes6(vrf.id)->routes();
   }
   facts.add("vrfs", "VRFs", inputs.vrfs().size());
   facts.add("ipv4Routes", "IPv4 routes", routes);
   facts.add("ipv6Routes", "IPv6 routes", routes6);
}

std::string sourceText(Source const& source, std::optional<state::LiveState> const& live) {
   switch (source.kind) {
      case SourceKind::stateDir:
         return live ? std::string(live->status.sourceText()) : "a load";
      case SourceKind::snapshot:
         return "a snapshot";
      case SourceKind::kernel:
         break;
   }
   return "the kernel, read for this command";
}

ExitStatus showState(Session& session, NoArguments const&) {
   Source const& source = session.source();
   bool const isDir = source.kind == SourceKind::stateDir;
   auto const live = isDir ? state::liveStateOf(source.path) : std::nullopt;
   state::Inputs inputs = session.inputs();
   Facts facts;
   if (source.kind != SourceKind::kernel) {
      facts.add("state", "State", source.path);
   }
   facts.add("source", "Source", sourceText(source, live));
   if (live) {
      addFollower(facts, *live);
   }
   addRoutes(facts, inputs);
   return session.write(session.isJson() ? facts.json() : facts.text());
}

constexpr auto table = std::to_array<Command>({
    display<showState>("show state", "where the state comes from, who keeps it and how up to date it is", noClauses),
    command<followSource>("follow", "keep the directory given with --state equal to the kernel or to a routing daemon",
                          followClauses),
});

}  // namespace

std::span<Command const> followCommands() {
   return table;
}

}  // namespace kiv
