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

   Options parse(Source const& usual) {
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
      if ((following_.print || following_.fpm) && !isFollow()) {
         throw UsageError("command line: --print and --fpm are options of follow");
      }
      following_.kernel = kernelGiven_;
      if (!sourceGiven_) {
         options_.source = usual;
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

   // The next word when it can be a place to connect to.
   void takeFpm() {
      std::string_view const next = at_ < arguments_.size() ? arguments_[at_] : "";
      bool const isPlace = !next.empty() && next.find_first_not_of("0123456789abcdefABCDEF:.[]") == std::string::npos &&
                           next.find_first_of("0123456789") != std::string::npos;
      following_.fpm = isPlace ? arguments_[at_++] : "";
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
       {"--fpm", false, [](Parser& parser, std::string_view) { parser.takeFpm(); }},
       {"--print", false, [](Parser& parser, std::string_view) { parser.following_.print = true; }},
       {"--json", false, [](Parser& parser, std::string_view) { parser.options_.json = true; }},
       {"--help", false, [](Parser& parser, std::string_view) { parser.options_.help = true; }},
   });
   return options;
}

}  // namespace

Options parseOptions(std::span<char const* const> arguments, Source const& usual) {
   return Parser(arguments).parse(usual);
}

}  // namespace kiv
