#pragma once

#include "Zam/Int.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

// Bounded reading of netlink bytes. Nothing about a length is taken on trust: a read past the end of its enclosing
// message or attribute, or a payload whose size is not its type's, throws RtnlError. Values are copied out, so the
// bytes need no alignment. Integers are in the machine's byte order, as netlink defines them.
namespace kernel {

using Bytes = std::span<std::byte const>;

// What is wrong with a dump, in one line.
class RtnlError : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
   // What a system call could not do, by errno.
   static RtnlError ofSystem(char const* what) {
      return RtnlError(std::string("rtnetlink: ") + what + ": " + std::strerror(errno));
   }
};

// What was dumped changed meanwhile: the dump may have missed or repeated entries, and reading it again may help.
class DumpInterrupted : public RtnlError {
 public:
   using RtnlError::RtnlError;
};

class ByteReader {
 public:
   explicit ByteReader(Bytes bytes) : left_(bytes) {}

   bool atEnd() const { return left_.empty(); }
   Bytes rest() const { return left_; }

   template <class T>
   T peek() const {
      static_assert(std::is_trivially_copyable_v<T>);
      T value;
      std::memcpy(&value, checked(sizeof(T)).data(), sizeof(T));
      return value;
   }

   template <class T>
   T take() {
      T const value = peek<T>();
      left_ = left_.subspan(sizeof(T));
      return value;
   }

   Bytes takeBytes(std::size_t count) {
      Bytes const taken = checked(count);
      left_ = left_.subspan(count);
      return taken;
   }

   // Takes a record of `length` bytes and the padding to the next multiple of four; the last one may lack its padding.
   Bytes takePadded(std::size_t length) {
      Bytes const taken = takeBytes(length);
      left_ = left_.subspan(std::min((4 - length % 4) % 4, left_.size()));
      return taken;
   }

 private:
   Bytes checked(std::size_t count) const {
      if (count > left_.size()) {
         throw RtnlError("rtnetlink: record cut off");
      }
      return left_.first(count);
   }

   Bytes left_;
};

struct Attribute {
   U16 type = 0;  // without the nested and byte order flags
   Bytes payload;

   template <class T>
   T as() const {
      if (payload.size() != sizeof(T)) {
         throw RtnlError("rtnetlink: attribute " + std::to_string(type) + " has " + std::to_string(payload.size()) +
                         " bytes, not " + std::to_string(sizeof(T)));
      }
      return ByteReader(payload).peek<T>();
   }

   // A string up to its terminating NUL, which must be there.
   std::string_view text() const {
      std::string_view const all(reinterpret_cast<char const*>(payload.data()), payload.size());
      std::size_t const end = all.find('\0');
      if (end == std::string_view::npos) {
         throw RtnlError("rtnetlink: attribute " + std::to_string(type) + " is not a terminated string");
      }
      return all.substr(0, end);
   }
};

// Calls visit(Attribute) for each attribute that `bytes` hold.
template <class Visit>
void forEachAttribute(Bytes bytes, Visit&& visit) {
   struct Header {
      U16 length;
      U16 type;
   };
   constexpr U16 typeMask = 0x3fff;
   for (ByteReader in(bytes); !in.atEnd();) {
      auto const header = in.peek<Header>();
      if (header.length < sizeof(Header)) {
         throw RtnlError("rtnetlink: attribute shorter than its header");
      }
      Bytes const payload = in.takePadded(header.length).subspan(sizeof(Header));
      visit(Attribute{static_cast<U16>(header.type & typeMask), payload});
   }
}

}  // namespace kernel
