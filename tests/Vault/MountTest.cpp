#include "VaultTesting.h"

namespace Vault::Testing {

using MountTest = TableTest;

namespace {

void seal(std::string const& path) {
   auto const header = peek<TableHeader>(path, 0);
   auto const words = std::bit_cast<WordsOf<TableHeader>>(header);
   patch(path, offsetof(TableHeader, sum), sumWords(words.data() + 1, offsetof(TableHeader, sum) / sizeof(U64) - 1));
}

U64 openFiles() {
   return static_cast<U64>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

}  // namespace

TEST_F(MountTest, refusesAFileThatIsNotTheTableInOneLineThatSaysWhy) {
   std::string const others = "holds other records than Vault::Fib::Route as this program knows it";
   using Case = std::tuple<U64, U32, std::string>;
   auto const impossible = [](std::string const& capacity, char const* buckets, char const* room) {
      return "impossible capacity " + capacity + " with " + buckets + " buckets and room for " + room + " elements";
   };
   for (auto const& [offset, value, complaint] : {
            Case{offsetof(TableHeader, magic), 0, "is not a table, the magic number is missing"},
            Case{offsetof(TableHeader, version), 1, "layout version 1, this program needs 2"},
            Case{offsetof(TableHeader, seed), 1, "has a damaged header"},
            Case{offsetof(TableHeader, recordHash), 1, others},
            Case{offsetof(TableHeader, recordSize), 40, others},
            Case{offsetof(TableHeader, elementSize), 8, others},
            Case{offsetof(TableHeader, capacity), 0, impossible("0", "128", "0")},
            Case{offsetof(TableHeader, capacity), 0xffffffff, impossible("4294967295", "128", "0")},
            Case{offsetof(TableHeader, capacity), 101, ""},
            Case{offsetof(TableHeader, bucketCount), 0, impossible("100", "0", "0")},
            Case{offsetof(TableHeader, bucketCount), 64, impossible("100", "64", "0")},
            Case{offsetof(TableHeader, arenaCapacity), 0xffffffff, impossible("100", "128", "4294967295")},
        }) {
      { Fib::RouteStatusWriter const writer(path_, {100}); }
      patch(path_, offset, value);
      if (complaint != "has a damaged header") {
         seal(path_);
      }
      std::string const expected = complaint.empty() ? "" : path_ + ": " + complaint;
      EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatus{path_}; }), expected);
      EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatusWriter{path_}; }), expected);
   }
}

TEST_F(MountTest, refusesAFileThatIsCutShortAnywhere) {
   { Fib::ForwardingStatusWriter const writer(path_, {100}); }
   auto const whole = std::filesystem::file_size(path_);
   for (U64 size = whole - 1; size > 0; size = size * 2 / 3) {
      std::filesystem::resize_file(path_, size);
      auto const said = complaintOf<MountError>([&] { Fib::ForwardingStatus{path_}; });
      EXPECT_EQ(said,
                path_ + (size < sizeof(TableHeader)
                             ? ": is too short for a table, " + std::to_string(size) + " bytes"
                             : ": is cut short, " + std::to_string(size) + " of " + std::to_string(whole) + " bytes"));
   }
}

TEST_F(MountTest, refusesOtherTablesAndWhatIsNoFile) {
   { Fib::ForwardingStatusWriter const writer(path_, {100}); }
   auto const others = path_ + ": holds other records than ";
   auto const asKnown = " as this program knows it";
   EXPECT_EQ(complaintOf<MountError>([&] { Fib6::ForwardingStatus{path_}; }), others + "Vault::Fib6::Fec" + asKnown);
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatus{path_}; }), others + "Vault::Fib::Route" + asKnown);
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatus(dir_ / "none"); }),
             dir_ / "none: cannot be opened: No such file or directory");
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatus(dir_ / ""); }), dir_ / ": is not a file");
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatusWriter(dir_ / "new", {0}); }),
             dir_ / "new: a table has 1 to 134217728 entries, not 0");
   ASSERT_EQ(::mkfifo((dir_ / "fifo").c_str(), 0600), 0);
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatus(dir_ / "fifo"); }), dir_ / "fifo: is not a file");
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatusWriter(dir_ / "fifo"); }), dir_ / "fifo: is not a file");
   std::filesystem::remove(dir_ / "fifo");
   EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_ / ""), {}), 1)
       << "a table that was not made leaves nothing behind";
}

TEST_F(MountTest, takesItsMemoryAtOnceAndHoldsNoFileOpen) {
   U64 const before = openFiles();
   Fib::RouteStatusWriter const writer(path_, {100'000});
   Fib::RouteStatus const reader(path_);
   EXPECT_EQ(openFiles(), before);
   struct stat status {};
   ASSERT_EQ(::stat(path_.c_str(), &status), 0);
   EXPECT_GE(status.st_blocks * 512, status.st_size) << "whoever reads it needs no memory for it";
   EXPECT_THROW(Fib::ForwardingStatusWriter(dir_ / "huge", {1000, maxArenaCapacity}), MountError);
   EXPECT_FALSE(std::filesystem::exists(dir_ / "huge"));
}

}  // namespace Vault::Testing
