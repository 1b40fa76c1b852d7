#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace kiv {

// What was typed is no command; one line that names the word, where it is and what could stand there.
class UsageError : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
};

// A command cannot be carried out as the box is: the word that it is about, and why. Who carries commands out adds
// which command it was.
class Refusal : public std::runtime_error {
 public:
   Refusal(std::string_view word, std::string const& why) : std::runtime_error(why), word_(word) {}

   std::string line(std::string_view command) const {
      return '"' + word_ + "\": " + std::string(command) + ": " + what();
   }

 private:
   std::string word_;
};

}  // namespace kiv
