#include "Vrf/VrfIdMap/Status.h"
#include "support/Testing.h"

namespace {

using VrfId = Vrf::VrfIdMap::VrfId;

struct VrfIdMap : testing::Test {
   Zam::Ptr<Vrf::VrfIdMap::Status> map = Zam::makePtr<Vrf::VrfIdMap::Status>();

   std::string nameOf(VrfId vrfId) const {
      auto const* const name = map->vrfName(vrfId);
      return name != nullptr ? name->bytes() : "none";
   }
   VrfId idOf(char const* name) const { return map->vrfId(L3::VrfName(name)).value_or(Vrf::VrfIdMap::noVrf); }
};

TEST_F(VrfIdMap, BothLookupsAgreeThroughRenamingAndDeletion) {
   map->vrfNameIs(0, "default");
   map->vrfNameIs(1, "red");
   map->vrfNameIs(2, "blue");
   map->vrfNameIs(1, "green");
   EXPECT_EQ(nameOf(1), "green");
   EXPECT_EQ(idOf("green"), 1U);
   EXPECT_EQ(idOf("red"), Vrf::VrfIdMap::noVrf);
   map->vrfNameDel(2);
   map->vrfNameDel(2);
   EXPECT_EQ(nameOf(2), "none");
   EXPECT_EQ(idOf("blue"), Vrf::VrfIdMap::noVrf);
   EXPECT_EQ(idOf("default"), 0U);
   EXPECT_EQ(idOf("Default"), Vrf::VrfIdMap::noVrf);
}

// Routes leaked from the old VRF still show its name until it is gone; commands about the name mean the new one.
TEST_F(VrfIdMap, VrfMadeAnewIsKnownUnderBothIds) {
   map->vrfNameIs(5, "red");
   map->vrfNameIs(6, "red");
   EXPECT_EQ(nameOf(5), "red");
   EXPECT_EQ(idOf("red"), 6U);
   map->vrfNameDel(5);
   EXPECT_EQ(idOf("red"), 6U);
   map->vrfNameIs(5, "red");
   map->vrfNameDel(6);
   EXPECT_EQ(idOf("red"), 5U);
}

}  // namespace
