#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

// Output on its way to a file descriptor, which stays the caller's. Text gathers in one block of memory and is written
// when it is flushed or the block is full; what is pending when the buffer goes is dropped.
//
// Nothing here throws or raises a signal. The first write error (a reader that went away, a full disk, a closed
// descriptor) is remembered in error() and all further output is discarded. An interrupt discards what is pending.
// One thread at a time.
namespace cliprint {

inline constexpr std::size_t globalBufsize = 64 * std::size_t{1024};

class KIV_EXPORT CliPrintBuffer {
 public:
   // The most that room() can be asked for.
   static constexpr std::size_t maxRoom = 512;

   // `size` below twice maxRoom is raised to that. `flags` is kept for later use and is 0.
   explicit CliPrintBuffer(int fd, std::size_t size = globalBufsize, U32 flags = 0);
   ~CliPrintBuffer() = default;
   CliPrintBuffer(CliPrintBuffer const&) = delete;
   CliPrintBuffer& operator=(CliPrintBuffer const&) = delete;

   // At least `bytes` of contiguous memory at the end of the output; give its used end to endIs().
   char* room(std::size_t bytes) noexcept {
      if (bytes > static_cast<std::size_t>(limit_ - end_)) [[unlikely]] {
         ioflush();
      }
      return end_;
   }
   void endIs(char* end) noexcept { end_ = end; }

   void append(char c) noexcept {
      *room(1) = c;
      ++end_;
   }
   void append(std::string_view text) noexcept {
      if (text.size() > static_cast<std::size_t>(limit_ - end_)) [[unlikely]] {
         appendInPieces(text);
         return;
      }
      end_ = copied(end_, text);
   }
   void fill(char c, std::size_t count) noexcept;

   // Copies short texts without a call; returns the end of the copy.
   static char* copied(char* to, std::string_view text) noexcept {
      std::size_t const n = text.size();
      if (n > 16) {
         std::memcpy(to, text.data(), n);
      } else if (n >= 8) {
         std::memcpy(to, text.data(), 8);
         std::memcpy(to + n - 8, text.data() + n - 8, 8);
      } else if (n >= 4) {
         std::memcpy(to, text.data(), 4);
         std::memcpy(to + n - 4, text.data() + n - 4, 4);
      } else {
         for (std::size_t i = 0; i < n; ++i) {
            to[i] = text[i];
         }
      }
      return to + n;
   }

   // Per cent of the block in use.
   U32 fullness() const noexcept { return static_cast<U32>(pending() * 100 / capacity()); }
   std::size_t pending() const noexcept { return static_cast<std::size_t>(end_ - begin_.get()); }
   std::size_t capacity() const noexcept { return static_cast<std::size_t>(limit_ - begin_.get()); }
   // Bytes taken so far, flushed, discarded or pending.
   U64 position() const noexcept { return flushed_ + pending(); }
   // What was taken from this position on, as long as all of it is pending.
   std::optional<std::string_view> since(U64 position) const noexcept {
      if (position < flushed_) {
         return std::nullopt;
      }
      char const* const from = begin_.get() + (position - flushed_);
      return std::string_view(from, static_cast<std::size_t>(end_ - from));
   }
   // The errno of the first write that failed; 0 when none did.
   int error() const noexcept { return error_; }

   // Writes what is pending; waits for a slow reader, until an interrupt.
   void ioflush() noexcept;
   void drop() noexcept;

 private:
   void appendInPieces(std::string_view text) noexcept;

   std::unique_ptr<char[]> begin_;
   char* end_;
   char* limit_;
   U64 flushed_ = 0;
   int fd_;
   int error_ = 0;
};

}  // namespace cliprint
