#include "Lumen/IntfId.h"
#include "Zam/Error.h"
#include "support/Testing.h"

namespace Lumen::Test {
namespace {

TEST(IntfIdTest, NamesAreBounded) {
   std::string const longest = "Port-Channel12345/1.409";
   ASSERT_EQ(longest.size(), IntfId::maxNameLength);
   EXPECT_EQ(IntfId::named(longest).name(), longest);
   EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>([&] { IntfId::named(longest + "4"); }),
             "Lumen::IntfId::name > maxLength() not allowed");
   for (std::string const bad : {"", " ", "eth 0", "eth0\n", "e\x7f"}) {
      EXPECT_THROW(IntfId::named(bad), Zam::ParseError) << bad;
   }
}

// That every text reads back is for TextValueTest, with names that look like these.
TEST(IntfIdTest, TextsSayTheKind) {
   EXPECT_EQ(IntfId().stringValue(), "");
   EXPECT_EQ(IntfId::fromFecId(0x1f).stringValue(), "FecId(0x1f)");
   EXPECT_EQ(IntfId::fromTunnelId(~U64{0}).stringValue(), "DynamicTunnel(0xffffffffffffffff)");
   EXPECT_EQ(IntfId::fromNexthopGroup(4294967295).stringValue(), "NexthopGroup(4294967295)");
   EXPECT_EQ(IntfId::named("FecId(0x1f)").stringValue(), "Name(FecId(0x1f))");
   EXPECT_EQ(IntfId::named("Name(FecId(0x1f))").stringValue(), "Name(Name(FecId(0x1f)))");
   for (auto const* const name : {"FecId(0x1F)", "FecId(0x01)", "FecId(0x)", "FecId(0x-1)", "FecId(0x1", "FecId(0x1)a",
                                  "NexthopGroup(4294967296", "Name(eth0)", "Name()"}) {
      EXPECT_EQ(IntfId::named(name).stringValue(), name);
      EXPECT_EQ(IntfId::parse(name).name(), name);
   }
   EXPECT_EQ(Zam::valueToStrep(IntfId::named("it's")), R"('it\'s')");
}

TEST(IntfIdTest, OrdersByKindThenNaturally) {
   std::vector<IntfId> sorted{IntfId()};
   std::istringstream names(
       "0 00 001 01 1 2 10 18446744073709551616 18446744073709551617 Ethernet Ethernet01 Ethernet1 Ethernet1.10 "
       "Ethernet01/1 Ethernet1/2 Ethernet1/10 Ethernet1a Ethernet2 Ethernet2b Ethernet10 Ethernet18446744073709 "
       "vlan4094 \xc3\xa9");
   for (std::string name; names >> name;) {
      sorted.push_back(IntfId::named(name));
   }
   for (U64 const id : {U64{0}, U64{255}, U64{256}, ~U64{0}}) {
      sorted.push_back(IntfId::fromFecId(id));
   }
   sorted.push_back(IntfId::fromTunnelId(1));
   sorted.push_back(IntfId::fromNexthopGroup(0));
   for (std::size_t i = 0; i < sorted.size(); ++i) {
      for (std::size_t j = 0; j < sorted.size(); ++j) {
         ASSERT_EQ(sorted[i] <=> sorted[j], i <=> j) << sorted[i] << " and " << sorted[j];
      }
   }
}

}  // namespace
}  // namespace Lumen::Test
