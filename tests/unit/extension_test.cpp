#include "mining/extension.h"

#include <set>
#include <tuple>

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

TEST(Extension, ClosingEdgeHasItsSmallerEndFirst) {
  const extension x = {4, 1, 3, 2, -1};
  EXPECT_EQ(closing_extension(4, 1, 3, 2), x);
  EXPECT_EQ(closing_extension(4, 3, 1, 2), x);
}

TEST(Extension, PendantEdgeHasNoOtherEnd) {
  const extension x = {4, 1, -1, 2, 7};
  EXPECT_EQ(pendant_extension(4, 1, 2, 7), x);
}

TEST(Extension, ImageMovesTheEndsAndNothingElse) {
  const int perm[] = {2, 0, 1};
  EXPECT_EQ(image_of(pendant_extension(4, 0, 5, 6), perm),
            pendant_extension(4, 2, 5, 6));
  // 0-1 comes to lie on 2-0.
  EXPECT_EQ(image_of(closing_extension(4, 0, 1, 5), perm),
            closing_extension(4, 0, 2, 5));
}

TEST(ExtensionSet, TellsTheFirstOfEqualOnes) {
  extension_set set;
  const extension x = {0, 0, 1, 2, -1};
  EXPECT_TRUE(set.insert(x));
  EXPECT_FALSE(set.insert(x));
}

TEST(ExtensionSet, EveryFieldCounts) {
  extension_set set;
  EXPECT_TRUE(set.insert({0, 0, 1, 2, -1}));
  EXPECT_TRUE(set.insert({1, 0, 1, 2, -1}));
  EXPECT_TRUE(set.insert({0, 3, 1, 2, -1}));
  EXPECT_TRUE(set.insert({0, 0, -1, 2, -1}));
  EXPECT_TRUE(set.insert({0, 0, 1, 0, -1}));
  EXPECT_TRUE(set.insert({0, 0, 1, 2, 0}));
}

TEST(ExtensionSet, FindsNothingInAnEmptyTable) {
  EXPECT_FALSE(extension_set().contains({0, 0, 1, 2, -1}));
}

// An extension of ends that are told as plain ints.
static extension extension_of(int pattern, int from, int to, int elabel,
                              int vlabel) {
  return {pattern, static_cast<int16_t>(from), static_cast<int16_t>(to), elabel,
          vlabel};
}

TEST(ExtensionSet, EqualsAStandardSetWhileItGrows) {
  test_rng rng(7);
  extension_set set;
  std::set<std::tuple<int, int, int, int, int>> plain;
  for (int i = 0; i < 5000; i++) {
    const int p = random_below(rng, 3);
    const int from = random_below(rng, 10);
    const int to = random_below(rng, 10) - 1;
    const int elabel = random_below(rng, 4);
    const int vlabel = random_below(rng, 4) - 1;
    const extension x = extension_of(p, from, to, elabel, vlabel);
    ASSERT_EQ(set.contains(x), plain.contains({p, from, to, elabel, vlabel}))
        << i;
    EXPECT_EQ(set.insert(x),
              plain.insert({p, from, to, elabel, vlabel}).second);
  }
  for (const auto &[p, from, to, elabel, vlabel] : plain)
    ASSERT_TRUE(set.contains(extension_of(p, from, to, elabel, vlabel)));
}

} // namespace kestro
