#pragma once

#include "Vault/TableFile.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"

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
// layout the tables below it have, and may be anywhere; in practice it is in memory, under /dev/shm.
//
// Paths are relative, of names between single slashes; none is "." or "..".
class KIV_EXPORT EntityManager final : public Zam::PtrInterface {
 public:
   static constexpr U32 stateVersion = 1;

   // StateError when the directory does not exist or its stamp is missing or of another version.
   explicit EntityManager(std::string stateDir);
   // Makes the directory (and those above it) and its stamp, unless they are there.
   static void stateDirIs(std::string const& stateDir);

   std::string_view fwkType() const noexcept override;
   std::string const& stateDir() const noexcept { return stateDir_; }
   bool exists(std::string_view path) const;

   // The table at the path, for reading; null when there is none. Vault::MountError when what is there is not that
   // table.
   template <class T>
   Zam::Ptr<T const> mount(std::string_view path) const {
      return exists(path) ? Zam::Ptr<T const>(Zam::makePtr<T>(fileOf(path))) : nullptr;
   }
   // The same, by the name of the type: "Vault::Fib::RouteStatus". StateError for a name that is no table's.
   Zam::Ptr<Zam::PtrInterface const> mountEntity(std::string_view path, std::string_view typeName) const;

   // A new table in place of any earlier one, for its writer; the directories above it are made.
   template <class Writer>
   Zam::Ptr<Writer> create(std::string_view path, Vault::TableFile::Sizes sizes) const {
      return Zam::makePtr<Writer>(fileToCreate(path), sizes);
   }
   template <class Writer>
   Zam::Ptr<Writer> create(std::string_view path, U32 capacity) const {
      return create<Writer>(path, Vault::TableFile::Sizes{.capacity = capacity});
   }
   // The same with what `fill(writer)` puts into it, all at once: whoever mounts the path finds the earlier table or
   // the filled one. Vault::MountError when the earlier one has a writer, or is no such table.
   template <class Writer, class Fill>
   void replace(std::string_view path, Vault::TableFile::Sizes sizes, Fill&& fill) const {
      auto const earlier = exists(path) ? open<Writer>(path) : nullptr;  // keeps other writers out meanwhile
      Beside const beside(fileToCreate(path));
      fill(*Zam::makePtr<Writer>(beside.file(), sizes));
      beside.putInPlace();
   }
   // The table that is there, for the next writer to go on with. Vault::MountError when there is none.
   template <class Writer>
   Zam::Ptr<Writer> open(std::string_view path) const {
      return Zam::makePtr<Writer>(fileOf(path));
   }

 private:
   // A file of another name beside its place; gone again unless it is put there.
   class KIV_EXPORT Beside {
    public:
      explicit Beside(std::string place);
      ~Beside();
      Beside(Beside const&) = delete;
      Beside& operator=(Beside const&) = delete;

      std::string const& file() const noexcept { return file_; }
      void putInPlace() const;

    private:
      std::string place_;
      std::string file_;
   };

   std::string fileOf(std::string_view path) const;
   std::string fileToCreate(std::string_view path) const;

   std::string stateDir_;
};

}  // namespace Hive
