#include "reference/base/enumeration.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace kestro {

TEST(NextKSubset, OfTwoOutOfFourInLexicographicOrder) {
  int subset[] = {0, 1};
  const int expected[][2] = {{0, 2}, {0, 3}, {1, 2}, {1, 3}, {2, 3}};
  for (const auto &next : expected) {
    next_k_subset(subset, 4, 2);
    EXPECT_EQ(subset[0], next[0]);
    EXPECT_EQ(subset[1], next[1]);
  }
}

// All k-subsets of 0 .. n-1 in lexicographic order, by bit masks.
static std::vector<std::vector<int>> all_k_subsets(int n, int k) {
  std::vector<std::vector<int>> subsets;
  for (int mask = 0; mask < 1 << n; mask++) {
    std::vector<int> subset;
    for (int i = 0; i < n; i++)
      if (mask >> i & 1)
        subset.push_back(i);
    if (static_cast<int>(subset.size()) == k)
      subsets.push_back(subset);
  }
  std::sort(subsets.begin(), subsets.end());
  return subsets;
}

TEST(NextKSubset, YieldsAllSubsetsOfUpToSeven) {
  for (int n = 1; n <= 7; n++) {
    for (int k = 1; k <= n; k++) {
      const auto expected = all_k_subsets(n, k);
      std::vector<int> subset = expected[0];
      for (size_t i = 1; i < expected.size(); i++) {
        next_k_subset(subset.data(), n, k);
        ASSERT_EQ(subset, expected[i]) << n << " " << k << " " << i;
      }
    }
  }
}

TEST(NextKSubsetDeathTest, PastTheLastSubsetFailsItsAssertion) {
  int subset[] = {2, 3};
  EXPECT_DEATH(next_k_subset(subset, 4, 2),
               "next_k_subset.*Assertion `i >= 0' failed");
}

TEST(NextKSubsetDeathTest, WholeSetHasNoNextSubset) {
  int subset[] = {0, 1, 2};
  EXPECT_DEATH(next_k_subset(subset, 3, 3), "Assertion `i >= 0' failed");
}

TEST(NextPermutation, OfThreeInLexicographicOrder) {
  int array[] = {1, 2, 3};
  const int expected[][3] = {
      {1, 3, 2}, {2, 1, 3}, {2, 3, 1}, {3, 1, 2}, {3, 2, 1}};
  for (const auto &next : expected) {
    EXPECT_EQ(next_permutation(array, 3), 1);
    EXPECT_TRUE(std::equal(array, array + 3, next));
  }
}

TEST(NextPermutation, OfTheLastOneIsNoneAndLeavesIt) {
  int array[] = {3, 2, 1};
  EXPECT_EQ(next_permutation(array, 3), 0);
  EXPECT_EQ(std::vector<int>(array, array + 3), (std::vector<int>{3, 2, 1}));
}

TEST(NextPermutation, CountsEqualValuesOnce) {
  int array[] = {1, 1, 2, 2};
  int permutations = 1;
  while (next_permutation(array, 4))
    permutations++;
  EXPECT_EQ(permutations, 6); // 4! / (2! 2!)
  EXPECT_EQ(std::vector<int>(array, array + 4), (std::vector<int>{2, 2, 1, 1}));
}

TEST(NextPermutation, OfOneOrNoValueIsNone) {
  int array[] = {7};
  EXPECT_EQ(next_permutation(array, 1), 0);
  EXPECT_EQ(next_permutation(array, 0), 0);
  EXPECT_EQ(array[0], 7);
}

} // namespace kestro
