#include "reference/base/exchange.h"

#include <vector>

#include <gtest/gtest.h>

namespace kestro {

TEST(Swaps, ExchangeTwoInts) {
  int a = 1;
  int b = 2;
  swap_ints(&a, &b);
  EXPECT_EQ(a, 2);
  EXPECT_EQ(b, 1);
}

TEST(Swaps, ExchangeTwoPairsOfInts) {
  int pairs[] = {1, 2, 3, 4, 5};
  swap_int_pairs(pairs, pairs + 2);
  EXPECT_EQ(std::vector<int>(pairs, pairs + 5),
            (std::vector<int>{3, 4, 1, 2, 5}));
}

TEST(Swaps, ExchangeTwoByteRanges) {
  char text[] = "abcXYZ-";
  swap_bytes(text, text + 3, 3);
  EXPECT_STREQ(text, "XYZabc-");
  swap_bytes(text, text + 3, 0);
  EXPECT_STREQ(text, "XYZabc-");
}

} // namespace kestro
