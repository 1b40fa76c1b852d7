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
   EXPECT_THROW(IntfId::parse(longest + "4"), Zam::RangeError);
   EXPECT_THROW(IntfId::named(""), Zam::ParseError);
   for (std::string const bad : {" ", "eth 0", "eth0 ", "\teth0", "eth0\n", "e\x01", "e\x7f"}) {
      EXPECT_THROW(IntfId::named(bad), Zam::ParseError) << bad;
      EXPECT_THROW(IntfId::parse(bad), Zam::ParseError) << bad;
   }
   EXPECT_THROW(IntfId::named(std::string_view("eth0\0", 5)), Zam::ParseError);
   EXPECT_EQ(IntfId::named("\xc3\xa9th0").name(), "\xc3\xa9th0");
}

TEST(IntfIdTest, TextsSayTheKind) {
   struct Case {
      IntfId intfId;
      std::string_view text;
   };
   std::vector<Case> const cases{
       {IntfId(), ""},
       {IntfId::named("Ethernet1/2.5"), "Ethernet1/2.5"},
       {IntfId::fromFecId(0), "FecId(0x0)"},
       {IntfId::fromFecId(0x1f), "FecId(0x1f)"},
       {IntfId::fromTunnelId(~U64{0}), "DynamicTunnel(0xffffffffffffffff)"},
       {IntfId::fromNexthopGroup(4294967295), "NexthopGroup(4294967295)"},
       // Interfaces that are named like the above.
       {IntfId::named("FecId(0x1f)"), "Name(FecId(0x1f))"},
       {IntfId::named("NexthopGroup(7)"), "Name(NexthopGroup(7))"},
       {IntfId::named("Name(FecId(0x1f))"), "Name(Name(FecId(0x1f)))"},
       // And those that only look so.
       {IntfId::named("FecId(0x1F)"), "FecId(0x1F)"},
       {IntfId::named("FecId(0x01)"), "FecId(0x01)"},
       {IntfId::named("FecId(0x)"), "FecId(0x)"},
       {IntfId::named("FecId(0x-1)"), "FecId(0x-1)"},
       {IntfId::named("FecId(0x1"), "FecId(0x1"},
       {IntfId::named("FecId(0x1)a"), "FecId(0x1)a"},
       {IntfId::named("NexthopGroup(4294967296"), "NexthopGroup(4294967296"},
       {IntfId::named("Name(eth0)"), "Name(eth0)"},
       {IntfId::named("Name()"), "Name()"},
   };
   for (auto const& [intfId, text] : cases) {
      EXPECT_EQ(intfId.stringValue(), text);
      EXPECT_EQ(IntfId::parse(text), intfId) << text;
   }
   EXPECT_EQ(Zam::valueToStrep(IntfId::named("it's")), R"('it\'s')");
   // One above the largest group id, one digit above the largest FEC id: too long for a name.
   EXPECT_THROW(IntfId::parse("NexthopGroup(4294967296)"), Zam::RangeError);
   EXPECT_THROW(IntfId::parse("FecId(0x10000000000000000)"), Zam::RangeError);
}

TEST(IntfIdTest, OrdersByKindThenNaturally) {
   std::vector<IntfId> sorted{IntfId()};
   for (auto const* const name : {"0",
                                  "00",
                                  "001",
                                  "01",
                                  "1",
                                  "2",
                                  "10",
                                  "18446744073709551616",
                                  "18446744073709551617",
                                  "Ethernet",
                                  "Ethernet01",
                                  "Ethernet1",
                                  "Ethernet1.10",
                                  "Ethernet01/1",
                                  "Ethernet1/2",
                                  "Ethernet1/10",
                                  "Ethernet1a",
                                  "Ethernet2",
                                  "Ethernet2b",
                                  "Ethernet10",
                                  "Ethernet18446744073709",
                                  "vlan4094",
                                  "\xc3\xa9"}) {
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
