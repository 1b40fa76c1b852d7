#include "programs/command/Session.h"

#include "cliprint/Interrupt.h"
#include "tests/cliprint/Capture.h"
#include "tests/programs/kiv/ProgramRun.h"

namespace kiv {
namespace {

// One session carries out one command after the other, each with its own output, errors and interrupt.
TEST(Session, CarriesOutTheNextCommandAfterAnInterrupt) {
   testing_cliprint::CapturedFile output;
   testing_cliprint::CapturedFile errors;
   Session session({}, false, output.fd(), errors.fd());
   auto const write = [&] { return session.write("text\n"); };
   EXPECT_EQ(session.carryOut([&] {
      cliprint::interruptedIs(true);
      return write();
   }),
             ExitStatus::interrupted);
   EXPECT_EQ(session.carryOut(write), ExitStatus::ok);
   EXPECT_EQ(session.carryOut([]() -> ExitStatus { throw std::runtime_error("no\nsuch"); }), ExitStatus::refused);
   EXPECT_EQ(session.carryOut([]() -> ExitStatus { throw cliprint::SigIntException(); }), ExitStatus::interrupted);
   EXPECT_EQ(session.carryOut(write), ExitStatus::ok);
   EXPECT_EQ(output.text(), "text\ntext\n");
   EXPECT_EQ(errors.text(), "kiv: no\\x0asuch\n");
}

// An error line stays one line of 1 kB at most and is valid UTF-8, whatever it is about.
TEST(Session, TellsErrorsInOneLine) {
   auto const told = [](std::string_view message) {
      testing_cliprint::CapturedFile errors;
      Session({}, false, STDOUT_FILENO, errors.fd()).report(message);
      return errors.text();
   };
   EXPECT_EQ(told("\x1b[2J\xc2\x9b"), "kiv: \\x1b[2J\\xc2\\x9b\n");
   for (std::size_t const length : {1017U, 1018U, 1019U, 1020U, 100000U}) {
      for (char const* const piece : {"a", "\n", "\xe2\x82\xac"}) {
         std::string message;
         while (message.size() < length) {
            message += piece;
         }
         std::string const line = told(message);
         EXPECT_LE(line.size(), 1024U);
         EXPECT_GT(line.size(), 1000U);
         EXPECT_EQ(line.find('\n'), line.size() - 1);
      }
   }
   EXPECT_EQ(told(std::string(1018, 'a')).size(), 1024U) << "what fits is not cut";
}

}  // namespace
}  // namespace kiv
