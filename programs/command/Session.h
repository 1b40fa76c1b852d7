#pragma once

#include "cliprint/Renderer.h"
#include "programs/command/ExitStatus.h"
#include "programs/command/Names.h"
#include "programs/command/Source.h"
#include "state/Interrupts.h"

#include <unistd.h>

#include <functional>
#include <string>
#include <string_view>

namespace kiv {

using state::endWhenInterrupted;

// What a command is handed: the box it is about, the form and the place of its output, and where its errors go. One
// session carries out one command after the other; an interrupt ends the one that runs.
class Session {
 public:
   Session(Source source, bool json, int output = STDOUT_FILENO, int errors = STDERR_FILENO)
       : source_(std::move(source)),
         isJson_(json),
         output_(output),
         errors_(errors) {}

   // For the process, before tables are used: an interrupt ends waits for their writers, carryOut() tells of damage,
   // and a line whom a change has to wait for.
   static void watchTables();

   // Carries a command out; whatever it throws becomes one line and the status that it means, as does the first damage
   // that it met in a table and went around. An interrupt that came meanwhile is over then.
   ExitStatus carryOut(std::function<ExitStatus()> const& command);

   Source const& source() const { return source_; }
   // Tells when nobody keeps any more what a follower kept.
   // Of what the command does not need there may be nothing.
   state::Inputs inputs(kernel::Need need = {}) const;
   // The directory that a command changes; a usage error with what `toSay` tells when the source is none.
   std::string const& stateDir(std::string_view command, std::string_view toSay) const;
   // What is called how now; nothing of a box that cannot be read.
   std::vector<Name> names(NamesQuery const& query) const;

   bool isJson() const { return isJson_; }
   cliprint::OutputFormat format() const { return isJson_ ? cliprint::modelFormat : cliprint::textFormat; }
   int output() const { return output_; }
   // A whole text, each line of it plain (cliprint/PlainText.h).
   ExitStatus write(std::string_view text) const;
   // What the errno that an output ended with means: 0 for a complete one, EINTR for the user's interrupt. Tells of a
   // failure, but not of a reader that went away.
   ExitStatus ended(int error) const;
   // One line "kiv: message" to the errors, plain and of 1 kB at most.
   void report(std::string_view message) const;

 private:
   Source source_;
   bool isJson_;
   int output_;
   int errors_;
};

}  // namespace kiv
