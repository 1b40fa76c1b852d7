#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"

#include <sys/types.h>

#include <string>
#include <string_view>

namespace Zam {

// An open directory, held by its descriptor: names stay relative to it whatever is put in its place meanwhile.
// std::system_error when it cannot be opened or is no directory.
class KIV_EXPORT Directory {
 public:
   explicit Directory(std::string const& path);
   Directory(Directory const&) = delete;
   Directory& operator=(Directory const&) = delete;
   ~Directory();

   int fd() const noexcept { return fd_; }

 private:
   int fd_;
};

// A file that is made beside its place and appears there whole, in place of what was there: readers find the earlier
// one or the new one. Until then it has no name, where the file system can do that, so that nothing is left of it
// whatever ends the process; elsewhere a name that cannot be guessed, which goes with the object. No link is followed
// and no file that is there is adopted. The file is locked as long as it is open, so what has such a name and is not
// locked was left behind by a process that was killed (removeLeftFiles).
//
// What fails is a std::system_error whose text is what could not be done and why; the place is then as it was.
class KIV_EXPORT NewFile {
 public:
   // `place` is relative to the open directory `dir` (or AT_FDCWD), which outlives this object. The mode is what the
   // umask leaves of it.
   NewFile(int dir, std::string place, mode_t mode = 0644);
   NewFile(NewFile const&) = delete;
   NewFile& operator=(NewFile const&) = delete;
   ~NewFile();

   // Open for reading and writing until this object goes.
   int fd() const noexcept { return fd_; }
   void append(std::string_view text);
   void putInPlace();
   // The same, so that it outlasts a loss of power.
   void putInPlaceDurably();

 private:
   bool openUnnamed(mode_t mode) noexcept;
   void openNamed(mode_t mode);
   bool isMade(std::string const& name, mode_t mode);
   void nameIt();
   void syncParent() const;
   std::string unguessable() const;

   int dir_;
   std::string place_;
   std::string beside_;  // its name until it is in place; empty when it has none
   int fd_ = -1;
};

// Removes what killed processes of this user left beside the place, or, when it ends in a slash or is empty, beside any
// place in that directory. How many there were; none of a directory that cannot be read.
KIV_EXPORT U32 removeLeftFiles(int dir, std::string const& place);

}  // namespace Zam
