#include "support/Testing.h"
#include "tests/fuzz/Targets.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<Bytes> corpusOf(std::string const& target) {
   std::vector<Bytes> corpus;
   for (auto const& entry : std::filesystem::directory_iterator(KIV_SOURCE_DIR "/tests/fuzz/corpus/" + target)) {
      std::ifstream file(entry.path(), std::ios::binary);
      corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
   }
   std::ranges::sort(corpus);
   return corpus;
}

// Some bytes become others, and a piece of another input may take the place of the end.
Bytes changed(Bytes bytes, Bytes const& other, std::mt19937& random) {
   for (auto changes = random() % 4; changes > 0 && !bytes.empty(); --changes) {
      auto& byte = bytes[random() % bytes.size()];
      byte = static_cast<std::uint8_t>(random() % 2 == 0 ? byte ^ (1U << random() % 8) : random());
   }
   if (random() % 3 == 0 && !other.empty()) {
      auto const from = static_cast<std::ptrdiff_t>(random() % other.size());
      bytes.resize(random() % (bytes.size() + 1));
      bytes.insert(bytes.end(), other.begin() + from, other.end());
   }
   return bytes;
}

// KIV_FUZZ_ROUNDS says how often each input is changed, where no fuzzer is at hand.
unsigned rounds() {
   char const* const told = std::getenv("KIV_FUZZ_ROUNDS");
   return told != nullptr ? static_cast<unsigned>(std::strtoul(told, nullptr, 10)) : 20;
}

}  // namespace

// What fuzzers found worth keeping reaches most of the code; it, and what is near it, is answered or refused.
TEST(Corpus, isAnsweredOrRefused) {
   for (fuzz::Target const& target : fuzz::targets) {
      auto const corpus = corpusOf(target.name);
      EXPECT_GT(corpus.size(), 10U) << target.name;
      std::mt19937 random(1);
      for (Bytes const& input : corpus) {
         target.run(input);
         for (unsigned round = rounds(); round > 0; --round) {
            target.run(changed(input, corpus[random() % corpus.size()], random));
         }
      }
   }
}
