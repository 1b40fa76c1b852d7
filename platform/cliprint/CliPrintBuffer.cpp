#include "cliprint/CliPrintBuffer.h"

#include "Zam/Error.h"
#include "cliprint/Interrupt.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>

namespace cliprint {

namespace {

// Keeps a write to a pipe without reader from killing the process, whatever its SIGPIPE disposition: the signal is
// blocked for this thread, and one that our write raised is taken away again.
class SigPipeGuard {
 public:
   SigPipeGuard() noexcept {
      sigset_t pending;
      sigpending(&pending);
      wasPending_ = sigismember(&pending, SIGPIPE) == 1;
      sigemptyset(&sigPipe_);
      sigaddset(&sigPipe_, SIGPIPE);
      pthread_sigmask(SIG_BLOCK, &sigPipe_, &before_);
   }
   ~SigPipeGuard() {
      if (raised_ && !wasPending_) {
         timespec const now{};
         while (sigtimedwait(&sigPipe_, nullptr, &now) == -1 && errno == EINTR) {
         }
      }
      pthread_sigmask(SIG_SETMASK, &before_, nullptr);
   }
   SigPipeGuard(SigPipeGuard const&) = delete;
   SigPipeGuard& operator=(SigPipeGuard const&) = delete;

   void raised() noexcept { raised_ = true; }

 private:
   sigset_t sigPipe_;
   sigset_t before_;
   bool wasPending_;
   bool raised_ = false;
};

// One write, however little; waits when the descriptor is non-blocking and full. Returns the bytes written, 0 when it
// should be tried again, or a negative errno.
ssize_t writeSome(int fd, std::string_view bytes) noexcept {
   ssize_t const written = ::write(fd, bytes.data(), bytes.size());
   if (written > 0) {
      return written;
   }
   if (written == 0) {
      return -EIO;
   }
   if (errno == EINTR) {
      return 0;
   }
   if (errno != EAGAIN && errno != EWOULDBLOCK) {
      return -errno;
   }
   pollfd wait{.fd = fd, .events = POLLOUT, .revents = 0};
   return ::poll(&wait, 1, -1) < 0 && errno != EINTR ? -errno : 0;
}

// Returns 0, or the errno that ended the output; an interrupt ends it without one.
int writeAll(int fd, std::string_view bytes) noexcept {
   SigPipeGuard guard;
   while (!bytes.empty() && !interrupted()) {
      ssize_t const result = writeSome(fd, bytes);
      if (result < 0) {
         if (result == -EPIPE) {
            guard.raised();
         }
         return static_cast<int>(-result);
      }
      bytes.remove_prefix(static_cast<std::size_t>(result));
   }
   return 0;
}

}  // namespace

CliPrintBuffer::CliPrintBuffer(int fd, std::size_t size, U32 flags) : fd_(fd) {
   Zam::assertThat(flags == 0, "flags == 0", "cliprint/CliPrintBuffer");
   std::size_t const bytes = std::max(size, 2 * maxRoom);
   begin_ = std::make_unique_for_overwrite<char[]>(bytes);
   end_ = begin_.get();
   limit_ = end_ + bytes;
}

void CliPrintBuffer::ioflush() noexcept {
   int const errnoBefore = errno;
   if (error_ == 0 && pending() != 0) {
      error_ = writeAll(fd_, {begin_.get(), pending()});
   }
   errno = errnoBefore;
   drop();
}

void CliPrintBuffer::drop() noexcept {
   flushed_ += pending();
   end_ = begin_.get();
}

void CliPrintBuffer::fill(char c, std::size_t count) noexcept {
   while (count != 0) {
      char* const to = room(1);
      std::size_t const piece = std::min(count, static_cast<std::size_t>(limit_ - to));
      std::memset(to, c, piece);
      end_ = to + piece;
      count -= piece;
   }
}

void CliPrintBuffer::appendInPieces(std::string_view text) noexcept {
   while (!text.empty()) {
      char* const to = room(1);
      std::string_view const piece = text.substr(0, static_cast<std::size_t>(limit_ - to));
      end_ = copied(to, piece);
      text.remove_prefix(piece.size());
   }
}

}  // namespace cliprint
