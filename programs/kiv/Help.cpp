#include "programs/kiv/Help.h"

#include "programs/kiv/CommandParser.h"
#include "programs/kiv/Commands.h"
#include "programs/kiv/Output.h"

#include <algorithm>
#include <iterator>

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

Words may be shortened while only one fits: kiv sh ip ro; keywords come before the names of protocols. What follows a
command may stand in any order; in commands that change the configuration it is spelled out. A "?" at the end tells what
may follow.

Exit status: 0 done; 1 refused, or bad input; 2 wrong command or option; 3 damaged tables or an internal fault;
4 output not written; 130 interrupted.
)";

constexpr std::size_t lineWidth = 120;

struct Line {
   std::string left;
   std::string right;

   bool operator==(Line const&) const = default;
};

std::string usageOf(Clause const& clause) {
   std::string text(clause.keyword);
   return text.append(text.empty() || clause.parameter.empty() ? "" : " ").append(clause.parameter);
}

std::string usageOf(Command const& command) {
   std::string text(command.words);
   for (Clause const& clause : command.clauses) {
      text.append(clause.required ? " " + usageOf(clause) : "");
   }
   return text;
}

// What may follow a command, indented below it.
std::vector<Line> clauseLines(Command const& command) {
   std::vector<Line> lines;
   for (Clause const& clause : command.clauses) {
      std::string help(clause.help);
      for (Word const& word : clause.words) {
         help.append(" ").append(word.word);
      }
      lines.push_back({"  " + usageOf(clause), std::move(help)});
   }
   return lines;
}

// Some commands take just what an earlier one does, which is then told once.
void addCommand(std::span<Command const> earlier, Command const& command, std::vector<Line>& lines) {
   lines.push_back({usageOf(command), std::string(command.help)});
   std::vector<Line> clauses = clauseLines(command);
   auto const same = std::ranges::find_if(earlier, [&](Command const& other) { return clauseLines(other) == clauses; });
   if (clauses.size() > 1 && same != earlier.end()) {
      clauses = {{"  ...", "as after " + std::string(same->words)}};
   }
   std::ranges::move(clauses, std::back_inserter(lines));
}

// Breaks a text at blanks, so that it fits between its column and the line width.
void appendWrapped(std::string& out, std::string_view text, std::size_t column) {
   while (column + text.size() > lineWidth) {
      std::size_t const blank = text.rfind(' ', lineWidth - column);
      if (blank == std::string_view::npos) {
         break;
      }
      out.append(text.substr(0, blank)).append("\n").append(column, ' ');
      text.remove_prefix(blank + 1);
   }
   out.append(text);
}

std::string columns(std::vector<Line> const& lines) {
   constexpr std::size_t widest = 28;  // what is longer stands out of the column
   std::size_t width = 0;
   for (Line const& line : lines) {
      width = std::max(width, line.left.size() <= widest ? line.left.size() : 0);
   }
   std::string text;
   for (Line const& line : lines) {
      std::size_t const column = std::max(width, line.left.size());
      text.append("  ").append(line.left);
      if (!line.right.empty()) {
         text.append(column - line.left.size() + 2, ' ');
         appendWrapped(text, line.right, column + 4);
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
   for (std::size_t i = 0; i < commands.size(); ++i) {
      addCommand(commands.first(i), commands[i], lines);
   }
   return "usage: kiv [--state DIR | --snapshot FILE | --kernel] [--json] COMMAND\n\nCommands:\n" + columns(lines) +
          std::string(optionsText);
}

std::string nextText(std::span<Command const> commands, std::vector<std::string> const& words) {
   std::vector<Line> lines;
   for (Candidate& candidate : candidates(commands, words)) {
      lines.push_back({std::move(candidate.word), std::move(candidate.help)});
   }
   return lines.empty() ? "  nothing more\n" : columns(lines);
}

}  // namespace kiv
