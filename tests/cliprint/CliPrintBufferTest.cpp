#include "cliprint/CliPrintBuffer.h"

#include "Capture.h"
#include "cliprint/Interrupt.h"
#include "cliprint/JsonScope.h"
#include "cliprint/RendererV2.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace {

using namespace std::chrono_literals;
using cliprint::CliPrintBuffer;
using cliprint::RendererV2;
using testing_cliprint::CapturedFile;
using testing_cliprint::OnRenderer;

struct Pipe {
   explicit Pipe(int flags = 0) {
      int ends[2];
      EXPECT_EQ(::pipe2(ends, O_CLOEXEC | flags), 0);
      reader = ends[0];
      writer = ends[1];
   }
   ~Pipe() {
      closeReader();
      ::close(writer);
   }
   void closeReader() { ::close(std::exchange(reader, -1)); }
   // Reads `bytes`, in pieces with pauses between them.
   std::string read(std::size_t bytes) const {
      std::string text;
      std::array<char, 30000> piece;
      while (text.size() < bytes) {
         auto const got = ::read(reader, piece.data(), piece.size());
         text.append(piece.data(), got < 0 ? 0 : static_cast<std::size_t>(got));
         std::this_thread::sleep_for(got < 0 ? 1ms : 0ms);
      }
      return text;
   }

   int reader;
   int writer;
};

std::string manyLines() {
   std::string text;
   for (int i = 0; i < 40000; ++i) {
      text += std::to_string(i) + '\n';
   }
   return text;
}

bool sigPipeIsPending() {
   sigset_t pending;
   sigpending(&pending);
   return sigismember(&pending, SIGPIPE) == 1;
}

// Sends a signal to the thread that made it, again and again, until it is destroyed.
std::jthread signalling(int signal) {
   return std::jthread([signal, target = pthread_self()](std::stop_token const& stop) {
      while (!stop.stop_requested()) {
         std::this_thread::sleep_for(5ms);
         pthread_kill(target, signal);
      }
   });
}

TEST(CliPrintBuffer, remembersTheFirstErrorAndGoesOn) {
   Pipe pipe;
   pipe.closeReader();
   int const full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
   int const readOnly = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
   for (auto const& [fd, error] : {std::pair(pipe.writer, EPIPE), {full, ENOSPC}, {-1, EBADF}, {readOnly, EBADF}}) {
      CliPrintBuffer buffer(fd);
      RendererV2 renderer(cliprint::textFormat, buffer, true);
      errno = 0;
      for (int i = 0; i < 3; ++i) {
         renderer.addFrills("%s", std::string(200000, 'x'));
         EXPECT_EQ(renderer.addArgs("%s", "more"), 4) << error;
         renderer.ioflush();
      }
      EXPECT_TRUE(buffer.error() == error && errno == 0 && buffer.pending() == 0) << error;
   }
   EXPECT_FALSE(sigPipeIsPending());
   ::close(full);
   ::close(readOnly);
}

TEST(CliPrintBuffer, leavesAForeignSigPipeAlone) {
   sigset_t sigPipe;
   sigset_t before;
   sigemptyset(&sigPipe);
   sigaddset(&sigPipe, SIGPIPE);
   pthread_sigmask(SIG_BLOCK, &sigPipe, &before);
   pthread_kill(pthread_self(), SIGPIPE);
   Pipe pipe;
   pipe.closeReader();
   CliPrintBuffer buffer(pipe.writer);
   buffer.append("x");
   buffer.ioflush();
   EXPECT_TRUE(buffer.error() == EPIPE && sigPipeIsPending());
   int signal = 0;
   sigwait(&sigPipe, &signal);
   pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(CliPrintBuffer, waitsForASlowReaderWhateverTheDescriptorAndSignals) {
   struct sigaction ignoring {};
   ignoring.sa_handler = [](int) {};
   struct sigaction before {};
   sigaction(SIGUSR1, &ignoring, &before);
   std::string const text = manyLines();
   for (int const flags : {0, O_NONBLOCK}) {
      Pipe pipe(flags);
      auto const disturbing = signalling(SIGUSR1);
      auto read = std::async(std::launch::async, [&] {
         std::this_thread::sleep_for(30ms);
         return pipe.read(text.size());
      });
      CliPrintBuffer buffer(pipe.writer, 1U << 20U);
      buffer.append(text);
      buffer.ioflush();
      EXPECT_EQ(buffer.error(), 0);
      EXPECT_EQ(read.get(), text);
   }
   sigaction(SIGUSR1, &before, nullptr);
}

class Interrupts : public ::testing::Test {
 protected:
   Interrupts() { cliprint::interruptHandlerIs(true); }
   ~Interrupts() override {
      cliprint::interruptHandlerIs(false);
      cliprint::resetInterrupted();
   }
};

TEST_F(Interrupts, endAWriteThatNobodyReads) {
   for (int const flags : {0, O_NONBLOCK}) {
      Pipe pipe(flags);
      CliPrintBuffer buffer(pipe.writer, 1U << 20U);
      RendererV2 renderer(cliprint::textFormat, buffer, true);
      renderer.addFrills("%s", manyLines());
      {
         auto const impatient = signalling(SIGINT);
         EXPECT_THROW(renderer.ioflush(), cliprint::SigIntException);
      }
      EXPECT_TRUE(cliprint::interrupted() && buffer.pending() == 0 && buffer.error() == 0);
      cliprint::resetInterrupted();
   }
}

TEST_F(Interrupts, throwFromEveryOperationUntilReset) {
   OnRenderer on(cliprint::modelFormat);
   RendererV2& renderer = on.renderer;
   cliprint::Attr32Info const attr("a", renderer, 1U);
   renderer.addAttributes("", attr.getArg());
   renderer.ioflush();
   renderer.addAttributes("", attr.getArg());
   raise(SIGINT);
   for (std::function<void()> const& call : std::initializer_list<std::function<void()>>{
            [&] { renderer.addFrills("x"); }, [&] { renderer.addAttributes("%u", attr.getArg()); },
            [&] { renderer.startDictEntry(attr); }, [&] { renderer.endJsonDict(); }, [&] { renderer.endDocument(); },
            [&] { renderer.ioflush(); }}) {
      EXPECT_THROW(call(), cliprint::SigIntException);
   }
   cliprint::resetInterrupted();
   renderer.ioflush();
   EXPECT_EQ(on.file.text(), R"({"a":1)") << "what was pending is dropped, nothing is closed";
   EXPECT_STREQ(cliprint::SigIntException().what(), "on user interrupt");
}

TEST_F(Interrupts, leaveScopesOpenAndDoNotEndTheProcess) {
   OnRenderer on(cliprint::modelFormat);
   {
      auto const object = cliprint::JsonScope::object(on.renderer, "a");
      on.renderer.ioflush();
      raise(SIGINT);
   }
   EXPECT_EQ(on.buffer.pending(), 0U);
   EXPECT_THROW(on.renderer.ioflush(), cliprint::SigIntException);
   EXPECT_EQ(on.file.text(), R"({"a":{)");
}

TEST(Interrupt, handlerGivesWayToTheOneBefore) {
   static std::atomic<int> calls = 0;
   struct sigaction counting {};
   counting.sa_handler = [](int) { ++calls; };
   struct sigaction before {};
   sigaction(SIGINT, &counting, &before);
   for (bool const installed : {true, true, false, false}) {
      cliprint::interruptHandlerIs(installed);
   }
   raise(SIGINT);
   EXPECT_EQ(calls, 1);
   EXPECT_FALSE(cliprint::interrupted());
   sigaction(SIGINT, &before, nullptr);
}

}  // namespace
