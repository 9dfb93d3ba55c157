#include "mining/extension_map.h"

#include <map>
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

TEST(ExtensionMap, FindsNothingInAnEmptyTable) {
  const extension_map<int> map;
  EXPECT_EQ(map.find({0, 0, 1, 2, -1}), nullptr);
}

TEST(ExtensionMap, TheFirstValueStays) {
  extension_map<int> map;
  const extension x = {0, 0, 1, 2, -1};
  EXPECT_TRUE(map.insert(x, 8));
  EXPECT_FALSE(map.insert(x, 9));
  ASSERT_NE(map.find(x), nullptr);
  EXPECT_EQ(*map.find(x), 8);
  EXPECT_EQ(map.find({0, 0, 1, 3, -1}), nullptr);
}

// A table without a free place would be searched for ever.
TEST(ExtensionMap, AnyRoomMadeBeforehandCanBeOutgrown) {
  for (size_t room = 0; room < 40; room++) {
    extension_map<int> map;
    map.reserve(room);
    for (int i = 0; i < 300; i++) {
      ASSERT_EQ(map.find(pendant_extension(i, 0, 0, 0)), nullptr) << room;
      ASSERT_TRUE(map.insert(pendant_extension(i, 0, 0, 0), i)) << room;
    }
    for (int i = 0; i < 300; i++)
      ASSERT_EQ(*map.find(pendant_extension(i, 0, 0, 0)), i) << room;
  }
}

// An extension of ends that are told as plain ints.
static extension extension_of(int pattern, int from, int to, int elabel,
                              int vlabel) {
  return {pattern, static_cast<int16_t>(from), static_cast<int16_t>(to), elabel,
          vlabel};
}

TEST(ExtensionMap, EqualsAStandardMapWhileItGrows) {
  test_rng rng(7);
  extension_map<int> map;
  std::map<std::tuple<int, int, int, int, int>, int> plain;
  for (int i = 0; i < 5000; i++) {
    const int p = random_below(rng, 3);
    const int from = random_below(rng, 10);
    const int to = random_below(rng, 10) - 1;
    const int elabel = random_below(rng, 4);
    const int vlabel = random_below(rng, 4) - 1;
    const extension x = extension_of(p, from, to, elabel, vlabel);
    const auto known = plain.find({p, from, to, elabel, vlabel});
    const int *found = map.find(x);
    ASSERT_EQ(found != nullptr, known != plain.end()) << i;
    if (found) {
      EXPECT_EQ(*found, known->second) << i;
    }
    EXPECT_EQ(map.insert(x, i),
              plain.try_emplace({p, from, to, elabel, vlabel}, i).second);
  }
  for (const auto &[key, value] : plain) {
    const auto [p, from, to, elabel, vlabel] = key;
    const int *found = map.find(extension_of(p, from, to, elabel, vlabel));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(*found, value);
  }
}

} // namespace kestro
