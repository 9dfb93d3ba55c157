#include "cl/search_plan.h"

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

using ints = std::vector<int>;

// What a plan along an order finds in t: the images by pattern vertex, empty
// when there are none.
static ints found_along(const graph_ptr &g, const ints &order,
                        const graph_ptr &t) {
  search_plan plan(g.get(), order.data());
  ints image(static_cast<size_t>(g->vs), -7);
  if (!plan.find(t.get(), image.data())) {
    EXPECT_EQ(image, ints(static_cast<size_t>(g->vs), -7));
    return {};
  }
  return image;
}

static ints found(const graph_ptr &g, const graph_ptr &t) {
  return found_along(g, identity_of(g->vs), t);
}

TEST(SearchPlan, TakesTheFirstMappingAlongItsOrder) {
  const graph_ptr edge = path_graph(2);
  const graph_ptr t = make_graph({0, 0, 0, 0}, {{1, 2}, {2, 3}});
  EXPECT_EQ(found_along(edge, {0, 1}, t), (ints{1, 2}));
  EXPECT_EQ(found_along(edge, {1, 0}, t), (ints{2, 1}));
}

TEST(SearchPlan, OneVertexIsFoundByItsLabel) {
  const graph_ptr one = make_graph({3}, {});
  EXPECT_EQ(found(one, make_graph({0, 1, 3, 3}, {{0, 1}})), ints{2});
  EXPECT_EQ(found(one, make_graph({0, 1}, {{0, 1}})), ints());
}

TEST(SearchPlan, InNoVertexNothingIsFound) {
  EXPECT_EQ(found(make_graph({3}, {}), make_graph({}, {})), ints());
}

TEST(SearchPlan, MoreVerticesThanThereAreAreNotFound) {
  EXPECT_EQ(found(path_graph(4), path_graph(3)), ints());
}

TEST(SearchPlan, LabelsMustBeEqual) {
  const graph_ptr g = make_graph({0, 1}, {{0, 1, 2}});
  EXPECT_EQ(found(g, make_graph({1, 0}, {{0, 1, 2}})), (ints{1, 0}));
  EXPECT_EQ(found(g, make_graph({1, 0}, {{0, 1, 1}})), ints());
  EXPECT_EQ(found(g, make_graph({0, 0}, {{0, 1, 2}})), ints());
}

TEST(SearchPlan, FurtherEdgesOfTheGraphDoNotMatter) {
  EXPECT_EQ(found(path_graph(4), complete_graph(4)), (ints{0, 1, 2, 3}));
}

TEST(SearchPlan, ClosingEdgesMustBeThereWithTheirLabel) {
  const graph_ptr ring =
      make_graph({0, 0, 0}, {{0, 1, 0}, {1, 2, 0}, {0, 2, 1}});
  EXPECT_EQ(found(ring, path_graph(5)), ints());
  EXPECT_EQ(found(ring, ring_graph(3)), ints());
  EXPECT_EQ(
      found(ring, make_graph({0, 0, 0}, {{0, 1, 1}, {1, 2, 0}, {0, 2, 0}})),
      (ints{0, 2, 1}));
}

TEST(SearchPlan, BacktracksOutOfADeadEnd) {
  // From 0 the way over 1 ends; that over 2 has the third vertex.
  const graph_ptr g = make_graph({5, 0, 6}, {{0, 1}, {1, 2}});
  const graph_ptr t =
      make_graph({5, 0, 0, 6, 0}, {{0, 1}, {0, 2}, {2, 3}, {1, 4}});
  EXPECT_EQ(found(g, t), (ints{0, 2, 3}));
}

TEST(SearchPlan, TwinsAreMappedInAscendingOrder) {
  EXPECT_EQ(found(star_graph(4), star_graph(6)), (ints{0, 1, 2, 3}));
  // Along 0 3 1 2 the leaf 3 comes first.
  EXPECT_EQ(found_along(star_graph(4), {0, 3, 1, 2}, star_graph(6)),
            (ints{0, 2, 3, 1}));
}

TEST(SearchPlan, LeavesWithOtherLabelsAreNoTwins) {
  // Leaves 1 (label 1), 2 (label 0) and the other way round in t.
  const graph_ptr g = make_graph({0, 1, 0, 1}, {{0, 1}, {0, 2}, {0, 3}});
  const graph_ptr t = make_graph({0, 0, 1, 1}, {{0, 1}, {0, 2}, {0, 3}});
  EXPECT_EQ(found(g, t), (ints{0, 2, 1, 3}));
  const graph_ptr labelled = make_graph({0, 0, 0}, {{0, 1, 1}, {0, 2, 0}});
  EXPECT_EQ(found(labelled, make_graph({0, 0, 0}, {{0, 1, 0}, {0, 2, 1}})),
            (ints{0, 2, 1}));
}

TEST(SearchPlan, TwinOrderBeginsWithALeaf) {
  // The first vertex of the order is a leaf and the twin of a later one.
  EXPECT_EQ(found_along(path_graph(3), {0, 1, 2}, path_graph(3)),
            (ints{0, 1, 2}));
  // 0's edge comes to the hub from its last leaf: the later twin's images lie
  // before it.
  const graph_ptr t = make_graph({0, 0, 0, 0}, {{0, 3}, {1, 3}, {2, 3}});
  EXPECT_EQ(found_along(path_graph(3), {0, 1, 2}, t), (ints{0, 3, 1}));
  const graph_ptr labelled = make_graph({5, 0, 5}, {{0, 1}, {1, 2}});
  EXPECT_EQ(
      found_along(labelled, {0, 1, 2}, make_graph({0, 5, 5}, {{0, 1}, {0, 2}})),
      (ints{1, 0, 2}));
}

TEST(SearchPlan, EdgeIsNoTwinOfItself) {
  EXPECT_EQ(found(path_graph(2), path_graph(2)), (ints{0, 1}));
  EXPECT_EQ(found_along(path_graph(2), {1, 0}, path_graph(2)), (ints{1, 0}));
}

TEST(SearchPlan, HubWithoutRoomCostsNoFactorial) {
  // 24 like leaves and one of another label, which the large star lacks.
  ints labels(26, 0);
  labels[25] = 1;
  std::vector<test_edge> edges;
  for (int i = 1; i < 26; i++)
    edges.push_back({0, i});
  EXPECT_EQ(found(make_graph(labels, edges), star_graph(40)), ints());
  // A neighbour of every leaf missing too: 12 leaves of 2 edges each.
  std::vector<test_edge> arms;
  for (int i = 1; i <= 12; i++) {
    arms.push_back({0, i});
    arms.push_back({i, 12 + i});
  }
  const graph_ptr g = make_graph(ints(25, 0), arms);
  arms.pop_back();
  EXPECT_EQ(found(g, make_graph(ints(25, 0), arms)), ints());
}

TEST(SearchPlan, FindCanBeRepeated) {
  const graph_ptr g = ring_graph(4);
  search_plan plan(g.get(), ints{0, 1, 2, 3}.data());
  ints image(4);
  for (int i = 0; i < 3; i++) {
    EXPECT_TRUE(plan.find(complete_graph(4).get(), image.data()));
    EXPECT_EQ(image, (ints{0, 1, 2, 3}));
    EXPECT_FALSE(plan.find(star_graph(9).get(), image.data()));
    EXPECT_TRUE(plan.find(ring_graph(4).get(), image.data()));
    EXPECT_EQ(image, (ints{0, 1, 2, 3}));
  }
  search_plan_free_work_area();
  EXPECT_TRUE(plan.find(ring_graph(4).get(), image.data()));
}

TEST(SearchPlan, RarestLabelComesFirst) {
  // Two ways to lay the path 0 - 1 - 0 with its centre of the rarer label: the
  // first along centre, end, end; it is centre 2, since 2 precedes 5.
  const graph_ptr g = make_graph({0, 1, 0}, {{0, 1}, {1, 2}});
  const graph_ptr t =
      make_graph({0, 0, 1, 0, 0, 1}, {{0, 5}, {1, 5}, {2, 3}, {2, 4}});
  ints image(3);
  search_plan rare_centre = search_plan::rarest_first(g.get(), {40, 2});
  ASSERT_TRUE(rare_centre.find(t.get(), image.data()));
  EXPECT_EQ(image, (ints{3, 2, 4}));
  // With the ends rarer it starts with one of them.
  search_plan rare_ends = search_plan::rarest_first(g.get(), {2, 40});
  ASSERT_TRUE(rare_ends.find(t.get(), image.data()));
  EXPECT_EQ(image, (ints{0, 5, 1}));
}

TEST(SearchPlan, RarestFirstGoesOnWithMostMappedNeighbours) {
  // A triangle 0 1 2 with a tail 3 of the rarest label but one: after 0 and 1,
  // vertex 2 has two mapped neighbours.  In t the tail of the first triangle is
  // missing, so that any order must come to the second.
  const graph_ptr g =
      make_graph({0, 0, 0, 1}, {{0, 1}, {1, 2}, {0, 2}, {0, 3}});
  const graph_ptr t =
      make_graph({0, 0, 0, 0, 0, 0, 1},
                 {{0, 1}, {1, 2}, {0, 2}, {3, 4}, {4, 5}, {3, 5}, {3, 6}});
  ints image(4);
  search_plan plan = search_plan::rarest_first(g.get(), {6, 1});
  ASSERT_TRUE(plan.find(t.get(), image.data()));
  EXPECT_EQ(image, (ints{3, 4, 5, 6}));
}

// A leaf that comes first takes its images from all vertices, its twins from a
// neighbour list; positions in one say nothing about the other.
TEST(SearchPlan, LeafThatComesFirstIsNoTwin) {
  const graph_ptr g = make_graph({1, 0, 1}, {{0, 1}, {1, 2}});
  const graph_ptr t = make_graph({0, 0, 0, 1, 1}, {{0, 3}, {0, 4}});
  const ints order = {0, 1, 2};
  ints image(3);
  search_plan plan(g.get(), order.data());
  ASSERT_TRUE(plan.find(t.get(), image.data()));
  EXPECT_EQ(image, (ints{3, 0, 4}));
}

} // namespace kestro
