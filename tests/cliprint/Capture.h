#pragma once

#include "cliprint/RendererV2.h"
#include "support/Testing.h"

#include <sys/mman.h>
#include <unistd.h>

namespace testing_cliprint {

// A file in memory that remembers what was written to it.
class CapturedFile {
 public:
   CapturedFile() : fd_(::memfd_create("captured", MFD_CLOEXEC)) {}
   ~CapturedFile() { ::close(fd_); }
   CapturedFile(CapturedFile const&) = delete;
   CapturedFile& operator=(CapturedFile const&) = delete;

   int fd() const { return fd_; }
   std::string text() const {
      std::string text(static_cast<std::size_t>(::lseek(fd_, 0, SEEK_END)), '\0');
      EXPECT_EQ(::pread(fd_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
      return text;
   }

 private:
   int fd_;
};

// A renderer of its own output.
struct OnRenderer {
   explicit OnRenderer(cliprint::OutputFormat format, bool ownsDocument = true,
                       std::size_t bufsize = cliprint::globalBufsize)
       : buffer(file.fd(), bufsize),
         renderer(format, buffer, ownsDocument) {}

   CapturedFile file;
   cliprint::CliPrintBuffer buffer;
   cliprint::RendererV2 renderer;
};

// What `walk` writes on a renderer of its own, which owns the document.
template <class Walk>
std::string rendered(cliprint::OutputFormat format, Walk&& walk, std::size_t bufsize = cliprint::globalBufsize) {
   OnRenderer on(format, true, bufsize);
   walk(on.renderer);
   on.renderer.endDocument();
   on.renderer.ioflush();
   EXPECT_EQ(on.buffer.error(), 0);
   return on.file.text();
}

}  // namespace testing_cliprint
