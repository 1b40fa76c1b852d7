#include "programs/kiv/Options.h"

#include "programs/command/Errors.h"

#include <array>
#include <optional>
#include <string_view>

namespace kiv {
namespace {

constexpr std::string_view blanks = " \t\r\n";

void addWords(std::string_view argument, std::vector<std::string>& words) {
   for (std::size_t start = 0; (start = argument.find_first_not_of(blanks, start)) != std::string_view::npos;) {
      std::size_t const end = std::min(argument.find_first_of(blanks, start), argument.size());
      words.emplace_back(argument.substr(start, end - start));
      start = end;
   }
}

class Parser {
 public:
   explicit Parser(std::span<char const* const> arguments) : arguments_(arguments) {}

   Options parse(std::string const& defaultStateDir) {
      while (at_ < arguments_.size()) {
         std::string_view const argument = arguments_[at_++];
         if (!onlyWords_ && argument.starts_with("--")) {
            option(argument);
         } else {
            addWords(argument, options_.words);
         }
      }
      takePipe();
      if (kernelGiven_ && !isFollow()) {
         sourceIs(SourceKind::kernel, {});
      }
      if (following_.print && !isFollow()) {
         throw UsageError("--print: command line: only a follower prints changes");
      }
      following_.kernel = kernelGiven_;
      if (!sourceGiven_ && !defaultStateDir.empty()) {
         options_.source = {.kind = SourceKind::stateDir, .path = defaultStateDir};
      }
      options_.source.following = following_;
      return std::move(options_);
   }

 private:
   struct Option {
      std::string_view name;
      bool takesValue;
      void (*take)(Parser& parser, std::string_view value);
   };
   static std::span<Option const> table();

   void option(std::string_view argument) {
      if (argument == "--") {
         onlyWords_ = true;
         return;
      }
      std::size_t const equals = argument.find('=');
      bool const valueInside = equals != std::string_view::npos;
      for (Option const& entry : table()) {
         if (entry.name == argument.substr(0, equals) && (entry.takesValue || !valueInside)) {
            entry.take(*this, !entry.takesValue ? "" : valueInside ? argument.substr(equals + 1) : nextValue(argument));
            return;
         }
      }
      throw UsageError(std::string(argument) + ": command line: no such option, see kiv --help");
   }

   std::string_view nextValue(std::string_view name) {
      if (at_ == arguments_.size()) {
         throw UsageError(std::string(name) + ": end of the command line: a name should follow");
      }
      return arguments_[at_++];
   }

   void sourceIs(SourceKind kind, std::string_view path) {
      if (sourceGiven_) {
         throw UsageError("command line: only one of --state, --snapshot and --kernel can be given");
      }
      sourceGiven_ = true;
      options_.source = {.kind = kind, .path = std::string(path), .isNamed = true};
   }

   // The one command with a source and a directory.
   bool isFollow() const { return !options_.words.empty() && options_.words.front() == "follow"; }

   // A command may end in "| json", as a word of its own or two.
   void takePipe() {
      auto& words = options_.words;
      if (words.size() >= 2 && words[words.size() - 2] == "|" && words.back() == "json") {
         words.resize(words.size() - 2);
         options_.json = true;
      } else if (!words.empty() && words.back() == "|json") {
         words.pop_back();
         options_.json = true;
      }
   }

   std::span<char const* const> arguments_;
   std::size_t at_ = 0;
   Options options_;
   bool onlyWords_ = false;
   bool sourceGiven_ = false;
   bool kernelGiven_ = false;
   Following following_;
};

std::span<Parser::Option const> Parser::table() {
   static constexpr auto options = std::to_array<Option>({
       {"--state", true, [](Parser& parser, std::string_view value) { parser.sourceIs(SourceKind::stateDir, value); }},
       {"--snapshot", true,
        [](Parser& parser, std::string_view value) { parser.sourceIs(SourceKind::snapshot, value); }},
       {"--kernel", false, [](Parser& parser, std::string_view) { parser.kernelGiven_ = true; }},
       {"--print", false, [](Parser& parser, std::string_view) { parser.following_.print = true; }},
       {"--json", false, [](Parser& parser, std::string_view) { parser.options_.json = true; }},
       {"--help", false, [](Parser& parser, std::string_view) { parser.options_.help = true; }},
   });
   return options;
}

}  // namespace

Options parseOptions(std::span<char const* const> arguments, std::string const& defaultStateDir) {
   return Parser(arguments).parse(defaultStateDir);
}

}  // namespace kiv
