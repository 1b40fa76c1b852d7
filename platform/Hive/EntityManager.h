#pragma once

#include "Vault/Error.h"
#include "Vault/TableFile.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Hive {

// The state directory cannot be used, or a path is none below it; one line that names it.
class KIV_EXPORT StateError : public std::runtime_error {
 public:
   explicit StateError(std::string const& message) : std::runtime_error(message) {}
   ~StateError() override;
};

// The state directory: tables by path, as in "fib/route/0". It is a directory with a stamp (hive.json) that says which
// layout the tables below it have and which load made them, and may be anywhere; in practice it is in memory, under
// /dev/shm. It is opened once: whatever is put in its place later, everything below it is of this one. Each table
// carries the load and its path, so one that came from elsewhere is refused.
//
// Paths are relative, of names between single slashes; none is "." or "..".
class KIV_EXPORT EntityManager final : public Zam::PtrInterface {
 public:
   static constexpr U32 stateVersion = 2;

   // StateError when the directory does not exist or its stamp is missing or of another version.
   explicit EntityManager(std::string stateDir);
   // Makes the directory (and those above it) and its stamp, with a load of its own, unless they are there.
   static void stateDirIs(std::string const& stateDir);

   std::string_view fwkType() const noexcept override;
   std::string const& stateDir() const noexcept { return stateDir_; }
   // The open directory.
   int directory() const noexcept { return dir_->fd(); }
   // The same number for all tables that were made together.
   U64 load() const noexcept { return load_; }
   // Whether there is anything at the path, be it a link that leads nowhere. MountError when that cannot be told.
   bool exists(std::string_view path) const;

   // The table at the path, for reading; null when there is none. Vault::MountError when what is there is not that
   // table.
   template <class T>
   Zam::Ptr<T const> mount(std::string_view path) const {
      return exists(path) ? mountRequired<T>(path) : nullptr;
   }
   // The same for a table that every state has: that there is none is a Vault::MountError, too.
   template <class T>
   Zam::Ptr<T const> mountRequired(std::string_view path) const {
      return Zam::makePtr<T>(placeOf(path));
   }
   // The same as mount(), by the name of the type: "Vault::Fib::RouteStatus". StateError for a name that is no table's.
   Zam::Ptr<Zam::PtrInterface const> mountEntity(std::string_view path, std::string_view typeName) const;

   // A new table in place of any earlier one, for its writer; the directories above it are made.
   template <class Writer>
   Zam::Ptr<Writer> create(std::string_view path, Vault::TableFile::Sizes sizes) const {
      return Zam::makePtr<Writer>(placeToCreate(path), sizes);
   }
   template <class Writer>
   Zam::Ptr<Writer> create(std::string_view path, U32 capacity) const {
      return create<Writer>(path, Vault::TableFile::Sizes{.capacity = capacity});
   }
   // The same with what `fill(writer)` puts into it, all at once: whoever mounts the path finds the earlier table or
   // the filled one. What is no such table is replaced as well; Vault::MountError when the earlier one has a writer.
   template <class Writer, class Fill>
   void replace(std::string_view path, Vault::TableFile::Sizes sizes, Fill&& fill) const {
      auto const earlier = earlierWriter<Writer>(path);  // keeps other writers out meanwhile
      Vault::Place const place = placeToCreate(path);
      Zam::removeLeftFiles(place.dirFd(), place.name);
      Writer replacement(place, sizes, Vault::When::later);
      fill(replacement);
      replacement.putInPlace();
   }
   // The table that is there, for the next writer to go on with. Vault::MountError when there is none.
   template <class Writer>
   Zam::Ptr<Writer> open(std::string_view path) const {
      return Zam::makePtr<Writer>(placeOf(path));
   }

 private:
   // Null when what is there is no such table, or nothing.
   template <class Writer>
   Zam::Ptr<Writer> earlierWriter(std::string_view path) const {
      try {
         return exists(path) ? open<Writer>(path) : nullptr;
      } catch (Vault::MountError const&) {
         if (isBeingWritten(path)) {
            throw;
         }
         return nullptr;
      }
   }
   // Somebody else holds the file for writing.
   bool isBeingWritten(std::string_view path) const;

   Vault::Place placeOf(std::string_view path) const;
   Vault::Place placeToCreate(std::string_view path) const;

   std::string stateDir_;
   std::shared_ptr<Zam::Directory const> dir_;
   U64 load_ = 0;
};

}  // namespace Hive
