#include "state/text/Json.h"

#include "state/Interrupts.h"
#include "state/text/JsonLocator.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace state {
namespace {

// Whether a key can stand in a way as it is; one with dots, slashes or blanks is put in brackets.
bool isPlain(std::string_view key) {
   return !key.empty() && std::all_of(key.begin(), key.end(),
                                      [](unsigned char c) { return std::isalnum(c) != 0 || c == '_' || c == '-'; });
}

// A value in a message: itself when it is one, its kind of brackets when it holds others.
std::string shown(Node::Element element) {
   if (element.is_object()) {
      return "{...}";
   }
   if (element.is_array()) {
      return "[...]";
   }
   constexpr std::size_t maxShown = 80;
   std::string text = simdjson::minify(element);
   if (text.size() > maxShown) {
      std::size_t end = maxShown;
      while ((static_cast<unsigned char>(text[end]) & 0xc0U) == 0x80U) {
         --end;
      }
      text.resize(end);
      text += "...";
   }
   return text;
}

[[noreturn]] void failFor(std::string const& file, std::string const& why) {
   throw JsonError(file + ": " + why);
}

// How much of a file is read at most, so that input without end comes to one.
U64 maxInput() {
   constexpr U64 fourGiB = U64{4} << 30;
   U64 limit = 0;
   char const* const told = std::getenv("KIV_MAX_INPUT");
   std::string_view const text = told != nullptr ? told : "";
   auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), limit);
   return error == std::errc() && end == text.data() + text.size() ? limit : fourGiB;
}

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

std::string contents(std::string const& file, Stream const& in) {
   if (in == nullptr) {
      failFor(file, std::strerror(errno));
   }
   U64 const limit = maxInput();
   std::string text;
   std::array<char, 65536> piece;
   while (std::size_t const read = std::fread(piece.data(), 1, piece.size(), in.get())) {
      endWhenInterrupted();
      if (read > limit - text.size()) {
         failFor(file, "has more than " + std::to_string(limit) + " bytes, which KIV_MAX_INPUT allows");
      }
      text.append(piece.data(), read);
   }
   endWhenInterrupted();
   if (std::ferror(in.get()) != 0) {
      failFor(file, std::strerror(errno));
   }
   return text;
}

struct Parsed {
   explicit Parsed(std::string json) : text(std::move(json)) { text.reserve(text.size() + simdjson::SIMDJSON_PADDING); }
   void parse() { error = parser->parse(text).get(root); }

   std::string text;
   std::unique_ptr<simdjson::dom::parser> parser = std::make_unique<simdjson::dom::parser>();
   simdjson::dom::element root;
   simdjson::error_code error = simdjson::SUCCESS;
};

// The parser takes no interrupt. A large text has a thread of its own, which is left to itself when there is one, with
// what it works on.
std::shared_ptr<Parsed> parsedText(std::string text) {
   constexpr std::size_t large = 4'000'000;
   constexpr std::chrono::milliseconds look(10);
   auto parsed = std::make_shared<Parsed>(std::move(text));
   if (parsed->text.size() < large) {
      parsed->parse();
      return parsed;
   }
   std::packaged_task<void()> task([parsed] { parsed->parse(); });
   auto done = task.get_future();
   std::thread(std::move(task)).detach();
   while (done.wait_for(look) != std::future_status::ready) {
      endWhenInterrupted();
   }
   done.get();
   return parsed;
}

}  // namespace

JsonError::~JsonError() = default;

void Node::appendWay(std::string& out) const {
   if (parent_ == nullptr) {
      return;
   }
   parent_->appendWay(out);
   if (index_ != noIndex) {
      out.append("[").append(std::to_string(index_)).append("]");
   } else if (isPlain(key_)) {
      out.append(out.empty() ? "" : ".").append(key_);
   } else {
      out.append("[").append(jsonQuoted(key_)).append("]");
   }
}

void Node::fail(std::string_view why) const {
   std::string way;
   appendWay(way);
   std::string message(file());
   if (!way.empty()) {
      message.append(": ").append(way);
   }
   message.append(": ").append(shown(element_)).append(": ").append(why);
   throw JsonError(message);
}

std::string_view Node::text() const {
   if (!element_.is_string()) {
      fail("not a string");
   }
   return element_.get_string().value_unsafe();
}

bool Node::boolean() const {
   if (!element_.is_bool()) {
      fail("not true or false");
   }
   return element_.get_bool().value_unsafe();
}

U64 Node::number(U64 max) const {
   U64 value = 0;
   if (element_.get(value) != simdjson::SUCCESS) {
      fail("not a whole number from 0 to " + std::to_string(max));
   }
   if (value > max) {
      fail("not from 0 to " + std::to_string(max));
   }
   return value;
}

// Of any size; the user may lose patience.
simdjson::dom::array Node::list() const {
   endWhenInterrupted();
   if (!element_.is_array()) {
      fail("not a list");
   }
   return element_.get_array().value_unsafe();
}

simdjson::dom::object Node::object() const {
   endWhenInterrupted();
   if (!element_.is_object()) {
      fail("not an object");
   }
   return element_.get_object().value_unsafe();
}

void Node::checkKeys(simdjson::dom::object members) const {
   std::vector<std::string_view> keys;
   for (auto const member : members) {
      keys.push_back(member.key);
   }
   std::sort(keys.begin(), keys.end());
   auto const repeated = std::adjacent_find(keys.begin(), keys.end());
   if (repeated != keys.end()) {
      Node(*this, *repeated, members.at_key(*repeated).value_unsafe()).fail("given twice");
   }
}

JsonDocument JsonDocument::load(std::string const& file) {
   return parse(file, contents(file, Stream(std::fopen(file.c_str(), "rbe"), &std::fclose)));
}

JsonDocument JsonDocument::loadIn(int dir, std::string const& dirName, char const* file) {
   std::string const name = dirName + "/" + file;
   int const descriptor = ::openat(dir, file, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
   struct stat info {};
   if (descriptor >= 0 && ::fstat(descriptor, &info) == 0 && !S_ISREG(info.st_mode)) {
      ::close(descriptor);
      failFor(name, "is not a file");
   }
   return parse(name, contents(name, Stream(descriptor >= 0 ? ::fdopen(descriptor, "rb") : nullptr, &std::fclose)));
}

JsonDocument JsonDocument::parse(std::string file, std::string text) {
   JsonDocument document(std::move(file));
   auto parsed = parsedText(std::move(text));
   if (parsed->error != simdjson::SUCCESS) {
      std::string const where = whereNotJson(parsed->text);
      throw JsonError(document.file_ + ": " + (where.empty() ? "" : where + ": ") +
                      simdjson::error_message(parsed->error));
   }
   document.parser_ = std::move(parsed->parser);
   document.root_ = parsed->root;
   return document;
}

}  // namespace state
