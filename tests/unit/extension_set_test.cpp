#include "mining/extension_set.h"

#include <set>
#include <tuple>

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

static const subgraph patterns[3] = {};

TEST(ExtensionSet, TellsTheFirstOfEqualOnes) {
  extension_set set;
  const extension x = {&patterns[0], 0, 1, 2, -1};
  EXPECT_TRUE(set.insert(x));
  EXPECT_FALSE(set.insert(x));
}

TEST(ExtensionSet, EveryFieldCounts) {
  extension_set set;
  EXPECT_TRUE(set.insert({&patterns[0], 0, 1, 2, -1}));
  EXPECT_TRUE(set.insert({&patterns[1], 0, 1, 2, -1}));
  EXPECT_TRUE(set.insert({&patterns[0], 3, 1, 2, -1}));
  EXPECT_TRUE(set.insert({&patterns[0], 0, -1, 2, -1}));
  EXPECT_TRUE(set.insert({&patterns[0], 0, 1, 0, -1}));
  EXPECT_TRUE(set.insert({&patterns[0], 0, 1, 2, 0}));
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
    EXPECT_EQ(set.insert({&patterns[p], from, to, elabel, vlabel}),
              plain.insert({p, from, to, elabel, vlabel}).second);
  }
}

} // namespace kestro
