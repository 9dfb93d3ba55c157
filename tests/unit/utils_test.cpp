#include "base/utils.h"

#include <algorithm>
#include <climits>
#include <ctime>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "reference/base/utils.h"
#include "support/fatal.h"

namespace kestro {

TEST(OpenFile, OpensWhatExists) {
  const file_ptr stream(open_file("/dev/null", "r"));
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(fgetc(stream.get()), EOF);
}

TEST(OpenFile, CantOpenAFileIsFatalWithoutAPlace) {
  EXPECT_EQ(fatal_text([] { open_file("/no/such/dir/in", "r"); }),
            "can't open a file '/no/such/dir/in'\n");
}

TEST(CheckRead, EndOfFileAndFoldersAreNoErrors) {
  for (const char *path : {"/dev/null", "/"}) {
    const file_ptr stream(open_file(path, "r"));
    EXPECT_EQ(fgetc(stream.get()), EOF);
    EXPECT_NO_THROW(check_read(stream.get(), path));
  }
}

TEST(CheckRead, ErrorOfReadingIsFatal) {
  const file_ptr stream(open_file("/proc/self/mem", "r"));
  EXPECT_EQ(fgetc(stream.get()), EOF); // nothing is mapped at address 0
  EXPECT_EQ(fatal_text([&] { check_read(stream.get(), "db.g"); }),
            "can't read a file 'db.g'\n");
}

static void use_cpu_time() {
  const clock_t start = clock();
  while (clock() - start < CLOCKS_PER_SEC / 50) {
  }
}

TEST(CpuTime, UserTimeNeverRunsBackwards) {
  const double before = user_cpu_time();
  EXPECT_GE(before, 0.0);
  use_cpu_time();
  EXPECT_GE(user_cpu_time(), before);
}

TEST(CpuTime, TotalTimeIsInSecondsAndGrowsWithWork) {
  const double before = cpu_time();
  use_cpu_time();
  const double used = cpu_time() - before;
  EXPECT_GT(used, 0.0);
  EXPECT_LT(used, 10.0);
}

TEST(CpuTime, TotalTimeHoldsTheUserTime) {
  const double user = user_cpu_time();
  EXPECT_GE(cpu_time(), user);
}

TEST(Basename, IsWhatFollowsTheLastSlash) {
  EXPECT_STREQ(kestro::basename("dir/prog"), "prog");
  EXPECT_STREQ(kestro::basename("/a/b/prog"), "prog");
}

TEST(Basename, OfAPathWithoutSlashIsThePath) {
  const char path[] = "prog";
  EXPECT_EQ(kestro::basename(path), path);
}

TEST(Basename, OfADirectoryOrNothingIsEmpty) {
  EXPECT_STREQ(kestro::basename("dir/"), "");
  EXPECT_STREQ(kestro::basename("/"), "");
  EXPECT_STREQ(kestro::basename(""), "");
}

TEST(Basename, PointsIntoThePath) {
  const char path[] = "dir/prog";
  EXPECT_EQ(kestro::basename(path), path + 4);
}

TEST(ChompNewlines, EndsTheTextAtItsFirstNewline) {
  char text[] = "one\ntwo";
  EXPECT_EQ(chomp_newlines(text), text);
  EXPECT_STREQ(text, "one");
}

TEST(ChompNewlines, ReplacesEveryNewline) {
  char text[] = "\none\n\ntwo\n";
  chomp_newlines(text);
  EXPECT_EQ(std::string(text, sizeof text),
            std::string("\0one\0\0two\0\0", sizeof text));
}

TEST(ChompNewlines, LeavesATextWithoutNewlines) {
  char text[] = "one\r";
  EXPECT_STREQ(chomp_newlines(text), "one\r");
  char empty[] = "";
  EXPECT_STREQ(chomp_newlines(empty), "");
}

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
