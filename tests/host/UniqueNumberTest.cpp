#include <gtest/gtest.h>

#include "internal/UniqueNumber.h"

namespace tessel::internal {
namespace {

TEST(UniqueNumber, IsTheFirstThatIsUsable) {
  EXPECT_EQ(firstUsable([](long) { return true; }), 0);
  EXPECT_EQ(firstUsable([](long number) { return number == 3; }), 3);
}

TEST(UniqueNumber, IsTheEndWhenNoneIsUsable) {
  EXPECT_EQ(firstUsable([](long) { return false; }, 5), 5);
  EXPECT_EQ(kNoUniqueNumber, 0x7fffffff);
}

TEST(UniqueNumber, AsksForNoneBehindTheFirstUsableOne) {
  int asked = 0;
  firstUsable([&](long number) { return ++asked, number == 2; });
  EXPECT_EQ(asked, 3);
}

}  // namespace
}  // namespace tessel::internal
