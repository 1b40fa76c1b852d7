#pragma once

#include "Zam/Int.h"
#include "state/Snapshot.h"

#include <simdjson.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

// Strict reading of JSON documents: whatever is not exactly what was asked for ends in a JsonError that says, in one
// line, the file, the way to the value, the value and what is wrong with it.
namespace state {

// A value and the way to it. Nodes live on the stack of the readers, each below the one it was taken from; the way is
// put into words only when it has to be told.
class Node {
 public:
   using Element = simdjson::dom::element;

   Node(std::string_view file, Element element) : file_(file), element_(element) {}
   Node(Node const& parent, std::string_view key, Element element) : parent_(&parent), key_(key), element_(element) {}
   Node(Node const& parent, std::size_t index, Element element) : parent_(&parent), index_(index), element_(element) {}

   Element element() const { return element_; }
   std::string_view key() const { return key_; }

   // Throws the JsonError "file: way: value: why".
   [[noreturn]] void fail(std::string_view why) const;

   bool isText() const { return element_.is_string(); }
   std::string_view text() const;
   bool boolean() const;
   U64 number(U64 max) const;
   template <class T>
   T number() const {
      return static_cast<T>(number(std::numeric_limits<T>::max()));
   }

   // The text as a T, which `form` describes ("an IPv4 address").
   template <class T>
   T parsed(std::string_view form) const {
      std::string_view const value = text();
      try {
         return T::parse(value);
      } catch (std::exception const&) {
         fail(std::string("not ").append(form));
      }
   }

   // Calls visit(Node) for each element of a list, or each member of an object; the keys of an object do not repeat.
   template <class Visit>
   void forEachElement(Visit&& visit) const {
      std::size_t index = 0;
      for (Element const element : list()) {
         visit(Node(*this, index++, element));
      }
   }
   template <class Visit>
   void forEachMember(Visit&& visit) const {
      simdjson::dom::object const members = object();
      checkKeys(members);
      for (auto const member : members) {
         visit(Node(*this, member.key, member.value));
      }
   }

   simdjson::dom::array list() const;
   simdjson::dom::object object() const;

 private:
   void checkKeys(simdjson::dom::object members) const;
   void appendWay(std::string& out) const;
   std::string_view file() const { return parent_ != nullptr ? parent_->file() : file_; }

   static constexpr std::size_t noIndex = ~std::size_t{0};

   Node const* parent_ = nullptr;
   std::string_view file_{};
   std::string_view key_{};
   std::size_t index_ = noIndex;
   Element element_;
};

// A document in memory. What is not JSON at all is a JsonError that says where.
class JsonDocument {
 public:
   // A file, which may be a pipe; at most as much as KIV_MAX_INPUT says, in bytes, or 4 GiB.
   static JsonDocument load(std::string const& file);
   // A file in the open directory `dir`, which messages call `dirName`. Anything else in its place is refused.
   static JsonDocument loadIn(int dir, std::string const& dirName, char const* file);
   // `file` is what messages call it.
   static JsonDocument parse(std::string file, std::string text);

   Node root() const { return Node(file_, root_); }

 private:
   explicit JsonDocument(std::string file) : file_(std::move(file)) {}

   std::string file_;
   std::unique_ptr<simdjson::dom::parser> parser_;
   Node::Element root_;
};

}  // namespace state
