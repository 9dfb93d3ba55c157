#include "mining/pattern_groups.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "support/graphs.h"

namespace kestro {

using pairs = std::set<std::pair<int, int>>;

// The pairs of ends, the smaller first.
static pairs images_of(orbit_walk *walk, const pattern_group &group,
                       edge_place place) {
  pairs found;
  for (const edge_place &image : walk->images(group, place))
    EXPECT_TRUE(found.insert(std::minmax(image.u, image.w)).second);
  return found;
}

TEST(PatternGroups, AreEmptyUntilPrepared) {
  pattern_groups groups;
  groups.expect(2);
  EXPECT_EQ(groups.at(1).count, 0);
  groups.prepare(1, path_graph(3).get());
  EXPECT_EQ(groups.at(0).count, 0);
  ASSERT_EQ(groups.at(1).count, 1);
  EXPECT_EQ(groups.at(1).vs, 3);
  EXPECT_EQ(groups.at(1).perm(0)[0], 2);
}

TEST(PatternGroups, AreComputedOnce) {
  pattern_groups groups;
  groups.expect(1);
  groups.prepare(0, star_graph(5).get());
  // A second graph under the same number is not looked at.
  groups.prepare(0, path_graph(2).get());
  EXPECT_EQ(groups.at(0).count, 3);
}

TEST(PatternGroups, LieBesideOneAnother) {
  pattern_groups groups;
  groups.expect(3);
  groups.prepare(2, star_graph(4).get());
  groups.prepare(0, path_graph(2).get());
  groups.prepare(1, make_graph({0, 1}, {{0, 1}}).get());
  EXPECT_EQ(groups.at(2).count, 2);
  EXPECT_EQ(groups.at(2).perm(1)[1], 3);
  EXPECT_EQ(groups.at(0).count, 1);
  EXPECT_EQ(groups.at(0).perm(0)[1], 0);
  EXPECT_EQ(groups.at(1).count, 0);
}

TEST(PatternGroups, ExpectForgets) {
  pattern_groups groups;
  groups.expect(1);
  groups.prepare(0, path_graph(2).get());
  groups.expect(1);
  EXPECT_EQ(groups.at(0).count, 0);
  groups.prepare(0, path_graph(3).get());
  EXPECT_EQ(groups.at(0).vs, 3);
}

TEST(PatternGroups, AreTheSameOnAnyNumberOfThreads) {
  test_rng rng(3);
  std::vector<graph_ptr> graphs;
  for (int i = 0; i < 300; i++)
    graphs.push_back(random_graph(rng, {2 + i % 7, i % 5, 1, 1, true}));
  const int n = static_cast<int>(graphs.size());
  const auto graph_of = [&](int i) -> const graph * {
    return i % 10 == 9 ? nullptr : graphs[static_cast<size_t>(i)].get();
  };
  pattern_groups alone;
  alone.expect(n);
  alone.prepare_all(1, graph_of);
  EXPECT_EQ(alone.at(9).count, 0);
  for (const int jobs : {2, 5}) {
    pattern_groups groups;
    for (int again = 0; again < 2; again++) {
      groups.expect(n);
      groups.prepare_all(jobs, graph_of);
      for (int i = 0; i < n; i++) {
        const pattern_group a = alone.at(i);
        const pattern_group b = groups.at(i);
        ASSERT_EQ(b.count, a.count);
        ASSERT_TRUE(std::equal(a.perms, a.perms + a.count * a.vs, b.perms));
      }
    }
  }
}

TEST(OrbitWalk, WithoutGeneratorsIsThePlace) {
  orbit_walk walk;
  EXPECT_EQ(images_of(&walk, {}, {3, -1}), (pairs{{-1, 3}}));
  EXPECT_EQ(images_of(&walk, {}, {3, 1}), (pairs{{1, 3}}));
}

TEST(OrbitWalk, ImagesOfAVertex) {
  pattern_groups groups;
  groups.expect(1);
  groups.prepare(0, star_graph(5).get());
  orbit_walk walk;
  EXPECT_EQ(images_of(&walk, groups.at(0), {0, -1}), (pairs{{-1, 0}}));
  EXPECT_EQ(images_of(&walk, groups.at(0), {2, -1}),
            (pairs{{-1, 1}, {-1, 2}, {-1, 3}, {-1, 4}}));
}

TEST(OrbitWalk, ImagesOfAPairInAnyOrder) {
  pattern_groups groups;
  groups.expect(2);
  groups.prepare(0, ring_graph(6).get());
  groups.prepare(1, path_graph(4).get());
  orbit_walk walk;
  const pairs opposite = {{0, 3}, {1, 4}, {2, 5}};
  EXPECT_EQ(images_of(&walk, groups.at(0), {1, 4}), opposite);
  EXPECT_EQ(images_of(&walk, groups.at(0), {4, 1}), opposite);
  EXPECT_EQ(images_of(&walk, groups.at(0), {0, 2}).size(), 6u);
  EXPECT_EQ(images_of(&walk, groups.at(1), {0, 3}), (pairs{{0, 3}}));
  EXPECT_EQ(images_of(&walk, groups.at(1), {0, 2}), (pairs{{0, 2}, {1, 3}}));
}

TEST(OrbitWalk, StartsWithThePlace) {
  pattern_groups groups;
  groups.expect(1);
  groups.prepare(0, star_graph(9).get());
  orbit_walk walk;
  const auto images = walk.images(groups.at(0), {5, 7});
  EXPECT_EQ(images.size(), 28u);
  EXPECT_EQ(images[0].u, 5);
  EXPECT_EQ(images[0].w, 7);
}

} // namespace kestro
