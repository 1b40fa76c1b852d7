#include "Vault/Extents.h"
#include "VaultTesting.h"

namespace Vault::Testing {

// That runs never overlap is seen by what FEC tables hold while their arena is scarce.
TEST(ExtentsTest, joinsPiecesWhenItStartsAgain) {
   Extents extents(1200);
   while (extents.take(1)) {
   }
   extents.reset({{600, 600}});
   EXPECT_EQ(extents.take(600), 0U);
   EXPECT_EQ(extents.take(1), std::nullopt);
}

}  // namespace Vault::Testing
