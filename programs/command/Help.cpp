#include "programs/command/Help.h"

#include <algorithm>
#include <iterator>

namespace kiv {
namespace {

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
      for (Word const& word : clause.keyword.empty() ? clause.words : std::span<Word const>()) {
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

std::string helpText(std::span<Command const> commands) {
   std::vector<Line> lines;
   for (std::size_t i = 0; i < commands.size(); ++i) {
      addCommand(commands.first(i), commands[i], lines);
   }
   return columns(lines);
}

std::string nextText(std::span<Command const> commands, std::vector<std::string> const& words, Names const& names) {
   Completion completion = complete(commands, words, "", names);
   if (!completion.error.empty()) {
      throw UsageError(completion.error);
   }
   std::vector<Line> lines;
   for (Candidate& candidate : completion.candidates) {
      lines.push_back({candidate.text(), std::move(candidate.help)});
   }
   return lines.empty() ? "  nothing more\n" : columns(lines);
}

}  // namespace kiv
