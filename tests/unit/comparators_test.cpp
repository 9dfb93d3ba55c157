#include "base/comparators.h"

#include <climits>

#include <gtest/gtest.h>

namespace kestro {

static int compared_ints(int a, int b) { return compar_int(&a, &b); }

TEST(Comparators, ComparIntIsThePlainDifference) {
  EXPECT_EQ(compared_ints(3, 10), -7);
  EXPECT_EQ(compared_ints(10, 3), 7);
  EXPECT_EQ(compared_ints(-4, -4), 0);
}

TEST(Comparators, ComparIntWrapsAround) {
  EXPECT_EQ(compared_ints(INT_MIN, 1), INT_MAX);
  EXPECT_EQ(compared_ints(INT_MAX, -1), INT_MIN);
}

static int compared_texts(const char *a, const char *b) {
  return compar_str(&a, &b);
}

TEST(Comparators, ComparStrComparesTheStringsAtTheAddresses) {
  EXPECT_LT(compared_texts("abc", "abd"), 0);
  EXPECT_GT(compared_texts("b", "abc"), 0);
  EXPECT_EQ(compared_texts("x", "x"), 0);
  EXPECT_LT(compared_texts("", "x"), 0);
}

TEST(Comparators, ComparStrIsByteWise) {
  EXPECT_GT(compared_texts("\xc3\xa9", "z"), 0);
  EXPECT_GT(compared_texts("a", "B"), 0);
}

TEST(Comparators, CompareIntArraysIsTheFirstDifference) {
  const int a[] = {1, 5, 9};
  const int b[] = {1, 8, 0};
  EXPECT_EQ(compare_int_arrays(a, b, 3), -3);
  EXPECT_EQ(compare_int_arrays(b, a, 3), 3);
  EXPECT_EQ(compare_int_arrays(a, a, 3), 0);
}

TEST(Comparators, CompareIntArraysLooksNoFurtherThanN) {
  const int a[] = {1, 5};
  const int b[] = {1, 8};
  EXPECT_EQ(compare_int_arrays(a, b, 1), 0);
  EXPECT_EQ(compare_int_arrays(a, b, 0), 0);
  EXPECT_EQ(compare_int_arrays(a, b, -1), 0);
}

} // namespace kestro
