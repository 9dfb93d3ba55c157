#include "cl/twin_graph.h"

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

using ints = std::vector<int>;

// The classes of the region around root, as members and edges.
struct classes_of {
  classes_of(const graph_ptr &pattern, const graph_ptr &target, int root,
             int radius)
      : g(graph_copy(pattern.get())), t(graph_copy(target.get())) {
    interruption_poll poll;
    region.set(g.get(), t.get());
    region.move(root, radius, &poll);
    for (int c = 0; c < region.classes(); c++)
      members.emplace_back(region.members(c),
                           region.members(c) + region.size(c));
  }
  // The classes that edges of c lead to.
  ints reached(int c) const {
    ints to;
    for (int j = 0; j < region.edge_count(c); j++)
      to.push_back(region.edges(c)[j].to);
    return to;
  }
  graph_ptr g; // which the region borrows
  graph_ptr t;
  twin_graph region;
  std::vector<ints> members;
};

TEST(TwinGraph, LeavesOfAStarAreTwins) {
  const classes_of star(path_graph(2), star_graph(5), 0, 1);
  EXPECT_EQ(star.members, (std::vector<ints>{{0}, {1, 2, 3, 4}}));
  EXPECT_EQ(star.reached(0), ints{1});
  EXPECT_EQ(star.reached(1), ints{0});
  EXPECT_EQ(star.region.slots(), 8);
}

TEST(TwinGraph, VerticesOfACliqueAreTwins) {
  const classes_of clique(path_graph(2), complete_graph(4), 2, 1);
  EXPECT_EQ(clique.members, (std::vector<ints>{{0, 1, 2, 3}}));
  EXPECT_EQ(clique.reached(0), ints{0});
}

TEST(TwinGraph, SidesOfABipartiteGraphAreTwins) {
  const classes_of sides(
      path_graph(2),
      make_graph({0, 0, 0, 0, 0},
                 {{0, 2}, {0, 3}, {0, 4}, {1, 2}, {1, 3}, {1, 4}}),
      0, 2);
  EXPECT_EQ(sides.members, (std::vector<ints>{{0, 1}, {2, 3, 4}}));
  EXPECT_EQ(sides.reached(0), ints{1});
}

TEST(TwinGraph, LabelsSetTwinsApart) {
  const graph_ptr pattern =
      make_graph({0, 0, 1, 0}, {{0, 1, 0}, {1, 2, 0}, {1, 3, 1}});
  const classes_of star(pattern,
                        make_graph({0, 0, 0, 1, 0, 1},
                                   {{0, 1}, {0, 2}, {0, 3}, {0, 4, 1}, {0, 5}}),
                        0, 1);
  EXPECT_EQ(star.members, (std::vector<ints>{{0}, {1, 2}, {3, 5}, {4}}));
  // The edge between adjacent twins has the same label for all of them.
  const classes_of triangle(
      pattern, make_graph({0, 0, 0}, {{0, 1, 1}, {0, 2, 0}, {1, 2, 0}}), 0, 1);
  EXPECT_EQ(triangle.members, (std::vector<ints>{{0, 1}, {2}}));
  EXPECT_EQ(triangle.region.edges(0)[0].elabel, 1);
  EXPECT_EQ(triangle.region.edges(0)[0].to, 0);
}

TEST(TwinGraph, EdgesThatThePatternLacksAreLeftOut) {
  // The edges of label 1 and vertex 3 with its label cannot be of use.
  const classes_of kept(
      path_graph(2),
      make_graph({0, 0, 0, 5, 0}, {{0, 1}, {0, 2, 1}, {0, 3}, {2, 4}}), 0, 4);
  EXPECT_EQ(kept.members, (std::vector<ints>{{0, 1}}));
  EXPECT_TRUE(kept.region.is_whole());
  EXPECT_EQ(kept.region.class_of(2), -1);
}

TEST(TwinGraph, RegionEndsAtItsRadius) {
  classes_of ball(path_graph(2), path_graph(9), 4, 2);
  EXPECT_EQ(ball.members, (std::vector<ints>{{2}, {3}, {4}, {5}, {6}}));
  EXPECT_FALSE(ball.region.is_whole());
  interruption_poll poll;
  EXPECT_FALSE(ball.region.move(4, 2, &poll));
  EXPECT_TRUE(ball.region.move(5, 2, &poll));
  EXPECT_EQ(ball.region.class_of(2), -1);
  EXPECT_EQ(ball.region.vertices(), 5);
  EXPECT_TRUE(ball.region.move(5, 20, &poll));
  EXPECT_TRUE(ball.region.is_whole());
  EXPECT_FALSE(ball.region.move(0, 20, &poll));
}

TEST(TwinGraph, RoomIsCountedByLabel) {
  const graph_ptr pattern = make_graph({0, 1, 1}, {{0, 1}, {0, 2}, {1, 2}});
  EXPECT_FALSE(classes_of(pattern, make_graph({0, 1}, {{0, 1}}), 0, 2)
                   .region.has_room());
  EXPECT_FALSE(classes_of(pattern,
                          make_graph({0, 1, 0, 1}, {{0, 1}, {1, 2}, {2, 3}}), 0,
                          1)
                   .region.has_room());
  EXPECT_FALSE(classes_of(pattern,
                          make_graph({0, 1, 0, 0}, {{0, 1}, {1, 2}, {1, 3}}), 0,
                          3)
                   .region.has_room());
  EXPECT_TRUE(classes_of(pattern,
                         make_graph({0, 1, 0, 1}, {{0, 1}, {1, 2}, {2, 3}}), 0,
                         3)
                  .region.has_room());
}

TEST(TwinGraph, EdgeEndsComeByKindThenDegree) {
  const classes_of tree(
      path_graph(2),
      make_graph({0, 0, 0, 0, 0, 0}, {{0, 1}, {0, 2}, {2, 3}, {2, 4}, {1, 5}}),
      0, 3);
  xvector<twin_graph::edge_end> ends;
  tree.region.edge_ends(tree.region.class_of(0), &ends);
  ASSERT_EQ(ends.size(), 2U);
  EXPECT_EQ(ends[0].degree, 3);
  EXPECT_EQ(ends[1].degree, 2);
}

} // namespace kestro
