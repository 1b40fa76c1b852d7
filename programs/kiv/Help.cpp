#include "programs/kiv/Help.h"

#include "programs/kiv/CommandParser.h"
#include "programs/kiv/Commands.h"
#include "programs/kiv/Output.h"

#include <algorithm>

namespace kiv {
namespace {

constexpr std::string_view optionsText = R"(
Sources:
  --state DIR        a state directory; default: $KIV_STATE
  --snapshot FILE    a snapshot, without loading it anywhere
  --kernel           this machine's own forwarding; what is used when nothing else is given

Options:
  --json             write JSON, as "| json" at the end of a command does
  --help             this text

Words may be shortened while only one fits: kiv sh ip ro. A "?" at the end tells what may follow.

Exit status: 0 done; 1 refused, or bad input; 2 no such command or option; 3 damaged tables or an internal fault;
4 output not written; 130 interrupted.
)";

std::string usageOf(Command const& command) {
   std::string text(command.words);
   for (Clause const& clause : command.clauses) {
      std::string part(clause.keyword);
      part.append(part.empty() || clause.parameter.empty() ? "" : " ").append(clause.parameter);
      text += clause.required ? ' ' + part : " [" + part + ']';
   }
   return text;
}

using Line = std::pair<std::string, std::string>;

std::string columns(std::vector<Line> const& lines) {
   std::size_t width = 0;
   for (auto const& [left, right] : lines) {
      width = std::max(width, left.size());
   }
   std::string text;
   for (auto const& [left, right] : lines) {
      text.append("  ").append(left);
      if (!right.empty()) {
         text.append(width - left.size() + 2, ' ').append(right);
      }
      text += '\n';
   }
   return text;
}

}  // namespace

ExitStatus help(Request const&) {
   return writeOutput(helpText(commands()));
}

std::string helpText(std::span<Command const> commands) {
   std::vector<Line> lines;
   for (Command const& command : commands) {
      lines.emplace_back(usageOf(command), command.help);
   }
   return "usage: kiv [--state DIR | --snapshot FILE | --kernel] [--json] COMMAND\n\nCommands:\n" + columns(lines) +
          std::string(optionsText);
}

std::string nextText(std::span<Command const> commands, std::vector<std::string> const& words) {
   std::vector<Line> lines;
   for (Candidate& candidate : candidates(commands, words)) {
      lines.emplace_back(std::move(candidate.word), std::move(candidate.help));
   }
   return lines.empty() ? "  nothing more\n" : columns(lines);
}

}  // namespace kiv
