#include "VaultTesting.h"

namespace Vault::Testing {

TEST(MountTest, refusesAFileThatIsNotTheTableInOneLineThatSaysWhy) {
   TempDir const dir;
   std::string const path = dir / "table";
   struct Case {
      U64 offset;
      U32 value;
      std::string_view complaint;
   };
   for (auto const& [offset, value, complaint] : {
            Case{offsetof(TableHeader, magic), 0, "is not a table, the magic number is missing"},
            Case{offsetof(TableHeader, version), 2, "layout version 2, this program needs 1"},
            Case{offsetof(TableHeader, recordHash), 1,
                 "holds other records than Vault::Fib::Route as this program knows it"},
            Case{offsetof(TableHeader, recordSize), 40,
                 "holds other records than Vault::Fib::Route as this program knows it"},
            Case{offsetof(TableHeader, elementSize), 8,
                 "holds other records than Vault::Fib::Route as this program knows it"},
            Case{offsetof(TableHeader, capacity), 0, "impossible capacity 0 with 128 buckets and room for 0 elements"},
            Case{offsetof(TableHeader, capacity), 0xffffffff,
                 "impossible capacity 4294967295 with 128 buckets and room for 0 elements"},
            Case{offsetof(TableHeader, capacity), 101, ""},
            Case{offsetof(TableHeader, bucketCount), 0,
                 "impossible capacity 100 with 0 buckets and room for 0 elements"},
            Case{offsetof(TableHeader, bucketCount), 64,
                 "impossible capacity 100 with 64 buckets and room for 0 elements"},
            Case{offsetof(TableHeader, arenaCapacity), 0xffffffff,
                 "impossible capacity 100 with 128 buckets and room for 4294967295 elements"},
        }) {
      { Fib::RouteStatusWriter const writer(path, {100}); }
      patch(path, offset, value);
      std::string const expected = complaint.empty() ? "" : path + ": " + std::string(complaint);
      EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatus{path}; }), expected);
      EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatusWriter{path}; }), expected);
   }
}

TEST(MountTest, refusesAFileThatIsCutShortAnywhere) {
   TempDir const dir;
   std::string const path = dir / "table";
   { Fib::ForwardingStatusWriter const writer(path, {100}); }
   auto const whole = std::filesystem::file_size(path);
   for (U64 size = whole - 1; size > 0; size = size * 2 / 3) {
      std::filesystem::resize_file(path, size);
      auto const said = complaintOf<MountError>([&] { Fib::ForwardingStatus{path}; });
      EXPECT_EQ(said,
                path + (size < sizeof(TableHeader)
                            ? ": is too short for a table, " + std::to_string(size) + " bytes"
                            : ": is cut short, " + std::to_string(size) + " of " + std::to_string(whole) + " bytes"));
   }
}

TEST(MountTest, refusesOtherTablesAndWhatIsNoFile) {
   TempDir const dir;
   std::string const path = dir / "table";
   { Fib::ForwardingStatusWriter const writer(path, {100}); }
   auto const others = path + ": holds other records than ";
   auto const asKnown = " as this program knows it";
   EXPECT_EQ(complaintOf<MountError>([&] { Fib6::ForwardingStatus{path}; }), others + "Vault::Fib6::Fec" + asKnown);
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatus{path}; }), others + "Vault::Fib::Route" + asKnown);
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatus(dir / "none"); }),
             dir / "none: cannot be opened: No such file or directory");
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatus(dir / ""); }), dir / ": is not a file");
   EXPECT_EQ(complaintOf<MountError>([&] { Fib::RouteStatusWriter(dir / "new", {0}); }),
             dir / "new: a table has 1 to 134217728 entries, not 0");
   std::size_t left = 0;
   for ([[maybe_unused]] auto const& entry : std::filesystem::directory_iterator(dir / "")) {
      ++left;
   }
   EXPECT_EQ(left, 1U) << "a table that was not made leaves nothing behind";
}

}  // namespace Vault::Testing
