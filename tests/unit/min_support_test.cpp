#include "mining/min_support.h"

#include <cmath>

#include <gtest/gtest.h>

namespace kestro {

TEST(MinSupport, IsTheNearestNumberHalvesUp) {
  EXPECT_EQ(min_support_of_share(0.25L, 10), 3); // 2.5
  EXPECT_EQ(min_support_of_share(0.24L, 10), 2);
  EXPECT_EQ(min_support_of_share(0.35L, 10), 4); // 3.5
}

TEST(MinSupport, StaysWithinOneAndAll) {
  EXPECT_EQ(min_support_of_share(0, 10), 1);
  EXPECT_EQ(min_support_of_share(-3, 10), 1);
  EXPECT_EQ(min_support_of_share(1, 10), 10);
  EXPECT_EQ(min_support_of_share(7, 10), 10);
  EXPECT_EQ(min_support_of_share(1, 0), 1);
}

TEST(MinSupport, IsOneForWhatIsNoNumber) {
  EXPECT_EQ(min_support_of_share(std::nanl(""), 10), 1);
}

} // namespace kestro
