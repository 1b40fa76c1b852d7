#include "support/Testing.h"
#include "tests/fuzz/Targets.h"

// What fuzzers found worth keeping reaches most of the code; it must be answered or refused by every build.
TEST(Corpus, isAnsweredOrRefused) {
   for (fuzz::Target const& target : fuzz::targets) {
      int inputs = 0;
      for (auto const& entry :
           std::filesystem::directory_iterator(std::string(KIV_SOURCE_DIR "/tests/fuzz/corpus/") + target.name)) {
         std::ifstream file(entry.path(), std::ios::binary);
         std::string const bytes(std::istreambuf_iterator<char>(file), {});
         target.run({reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size()});
         target.run({reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size() / 2});
         ++inputs;
      }
      EXPECT_GT(inputs, 10) << target.name;
   }
}
