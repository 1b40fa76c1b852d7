#pragma once

#include "Zam/Int.h"
#include "state/Snapshot.h"

#include <string>
#include <string_view>

namespace state {

// Puts a JSON document together, value by value; commas and quotes are its own.
class JsonWriter {
 public:
   explicit JsonWriter(std::string& out) : out_(out) {}

   void open(char bracket) {
      separate();
      out_ += bracket;
      isFirst_ = true;
   }
   void close(char bracket) {
      out_ += bracket;
      isFirst_ = false;
   }
   void key(std::string_view name) {
      text(name);
      out_ += ':';
      isFirst_ = true;
   }
   void text(std::string_view value) {
      separate();
      out_ += jsonQuoted(value);
   }
   void number(U64 value) {
      separate();
      out_ += std::to_string(value);
   }
   void boolean(bool value) {
      separate();
      out_ += value ? "true" : "false";
   }

 private:
   void separate() {
      if (!isFirst_) {
         out_ += ',';
      }
      isFirst_ = false;
   }

   std::string& out_;
   bool isFirst_ = true;
};

}  // namespace state
