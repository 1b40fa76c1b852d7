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

// Whatever is taken out of a run that was given back, the rest of it can be taken too.
TEST(ExtentsTest, splittingARunLeaksNothing) {
   for (U32 const whole : Extents::sizes) {
      for (U32 const part : Extents::sizes) {
         Extents extents(whole);
         extents.giveBack({*extents.take(whole), whole});
         U32 taken = 0;
         for (U32 const size : {part, 1U}) {
            while (taken + size <= whole && extents.take(size)) {
               taken += size;
            }
         }
         EXPECT_EQ(taken, whole) << "in pieces of " << part;
      }
   }
}

}  // namespace Vault::Testing
