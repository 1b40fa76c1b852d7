#pragma once

#include "Zam/Int.h"
#include "Zam/NewFile.h"

#include <filesystem>
#include <optional>
#include <string>

namespace state {

// A directory of this process in another one, under a name that nobody can guess; it goes with the object. It is locked
// as long as the object lives, so what lies there unlocked was left behind by a process that was killed. All below it
// is made relative to the directory itself, whatever is put in the place of its name meanwhile.
class NewDir {
 public:
   // Hive::StateError when it cannot be made.
   NewDir(std::filesystem::path const& parent, std::string const& prefix, mode_t mode);
   ~NewDir();
   NewDir(NewDir const&) = delete;
   NewDir& operator=(NewDir const&) = delete;

   // A path to the directory itself.
   std::string path() const;
   int fd() const { return dir_->fd(); }

   // Gives it the name in the same directory, in place of what has it or else as the first. What was there before is
   // then under the other name and goes with this object.
   void putInPlace(std::string const& name, bool replacing) const;

 private:
   bool isMade(std::string const& name, mode_t mode);

   std::filesystem::path parentPath_;
   Zam::Directory parent_;
   std::string name_;
   std::optional<Zam::Directory> dir_;
   mode_t mode_ = 0700;  // in its place; until then it is private
};

// Removes what killed processes of this user left of such directories; how many there were.
U32 removeLeftDirs(std::filesystem::path const& parent, std::string const& prefix);

}  // namespace state
