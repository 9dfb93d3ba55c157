#include "cl/search_plan.h"

#include <gtest/gtest.h>

#include "support/records.h"

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

// Rings of six side by side, edges of label 0 within them; those named more.
static graph_ptr benzenes(int count, const std::vector<test_edge> &more) {
  std::vector<test_edge> edges = more;
  for (int ring = 0; ring < count; ring++)
    for (const test_edge &edge : edges_of(ring_graph(6).get()))
      edges.push_back({edge.u + 6 * ring, edge.w + 6 * ring, 0});
  return make_graph(ints(static_cast<size_t>(6 * count), 0), edges);
}

TEST(SearchPlan, ChainsAreInNoRingThatIsTooSmall) {
  const graph_ptr chain = path_graph(7);
  EXPECT_EQ(found(chain, benzenes(4, {})), ints());
  // Edges of another kind do not make the rings one component.
  const graph_ptr joined = benzenes(4, {{0, 6, 1}, {9, 12, 1}, {15, 18, 1}});
  EXPECT_EQ(found(chain, joined), ints());
  // The last two rings are one component; all before it fails.
  EXPECT_EQ(found(chain, benzenes(4, {{0, 6, 1}, {15, 18, 0}})),
            (ints{12, 13, 14, 15, 18, 19, 20}));
}

TEST(SearchPlan, ComponentsAsLargeAsThePatternHaveRoom) {
  // Rings of six, then a component that is the pattern itself.
  const graph_ptr parts[] = {path_graph(7), ring_graph(7), complete_graph(5)};
  for (const graph_ptr &part : parts) {
    std::vector<test_edge> edges = edges_of(benzenes(3, {}).get());
    for (const test_edge &edge : edges_of(part.get()))
      edges.push_back({edge.u + 18, edge.w + 18});
    const graph_ptr target =
        make_graph(ints(18 + static_cast<size_t>(part->vs), 0), edges);
    const ints order = identity_of(part->vs);
    for (const int after : {0, 24}) {
      search_plan plan(part.get(), order.data());
      plan.memory().look_after = after;
      ints image(order.size(), -7);
      ASSERT_TRUE(plan.find(target.get(), image.data()));
      for (const int w : image)
        EXPECT_GE(w, 18);
    }
  }
}

// Where the look is, the vertices that it met are noted.
TEST(SearchPlan, LooksAtComponentsOnceSomeVerticesAreTakenBack) {
  const graph_ptr chain = path_graph(7);
  const ints order = identity_of(7);
  ints image(7, -7);
  search_plan plan(chain.get(), order.data());
  EXPECT_FALSE(plan.find(path_graph(3).get(), image.data()));
  EXPECT_TRUE(plan.find(path_graph(9).get(), image.data()));
  EXPECT_TRUE(plan.memory().met.empty());
  EXPECT_FALSE(plan.find(benzenes(2, {}).get(), image.data()));
  EXPECT_EQ(plan.memory().met.size(), 12u);
  // Had the search gone on, it would have paused below the first root.
  search_plan impatient(chain.get(), order.data());
  impatient.memory().look_after = 0;
  impatient.memory().patience = 1;
  EXPECT_FALSE(impatient.find(benzenes(2, {}).get(), image.data()));
  EXPECT_EQ(impatient.memory().pauses.root, -1);
}

TEST(SearchPlan, NothingIsInUseBehindASearchThatFoundNoComponent) {
  const graph_ptr chain = path_graph(7);
  const ints order = identity_of(7);
  search_plan plan(chain.get(), order.data());
  ints image(7, -7);
  const graph_ptr rings = benzenes(3, {});
  EXPECT_FALSE(plan.find(rings.get(), image.data()));
  const graph_ptr long_path = path_graph(18);
  EXPECT_TRUE(plan.find(long_path.get(), image.data()));
  EXPECT_EQ(image, order);
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
}

TEST(SearchPlan, CanBecomeThePlanOfAnotherPattern) {
  const graph_ptr large = ring_graph(5);
  const graph_ptr small = path_graph(2);
  search_plan plan;
  ints image(5, -7);
  plan.set(large.get(), ints{0, 1, 2, 3, 4}.data());
  EXPECT_TRUE(plan.find(ring_graph(5).get(), image.data()));
  EXPECT_EQ(image, (ints{0, 1, 2, 3, 4}));
  plan.set(small.get(), ints{1, 0}.data());
  image.assign(2, -7);
  EXPECT_TRUE(plan.find(ring_graph(5).get(), image.data()));
  EXPECT_EQ(image, (ints{1, 0}));
  plan.set(large.get(), ints{0, 1, 2, 3, 4}.data());
  EXPECT_FALSE(plan.find(path_graph(5).get(), image.data()));
}

// Where the plan whose order begins at the rarest edges of a list places g in
// the last graph of the list, searching it by itself; empty for nowhere.
static ints found_rarest_first(const graph_ptr &g,
                               const graph_list_ptr &graphs) {
  const graph_profiles profiles(graphs.get());
  search_plan plan;
  plan.set_rarest_first(g.get(), profiles);
  ints image(static_cast<size_t>(g->vs));
  const int last = graphs->count - 1;
  return plan.find(profiles.graph_at(last), image.data()) ? image : ints();
}

TEST(SearchPlan, RarestEdgeDecidesWhereTheSearchBegins) {
  // The path a - b - c - d, labels 1, 0, 2, whose inner vertices have two
  // neighbours each.  In t it lies as 0 1 2 3 and as 7 6 5 4.
  const graph_ptr g =
      make_graph({0, 0, 0, 0}, {{0, 1, 1}, {1, 2, 0}, {2, 3, 2}});
  const auto t = [] {
    return make_graph(
        {0, 0, 0, 0, 0, 0, 0, 0},
        {{7, 0, 1}, {0, 6, 0}, {6, 1, 2}, {5, 4, 1}, {4, 2, 0}, {2, 3, 2}});
  };
  // Label 1 is the rarest in the list, so that vertex 1 takes the smallest
  // vertex it can: 0 rather than 4.
  EXPECT_EQ(found_rarest_first(
                g, database_of(make_graph({0, 0, 0, 0},
                                          {{0, 1, 0}, {1, 2, 2}, {2, 3, 2}}),
                               t())),
            (ints{7, 0, 6, 1}));
  // Label 2 is: vertex 2 takes 2 rather than 6.
  EXPECT_EQ(found_rarest_first(
                g, database_of(make_graph({0, 0, 0, 0},
                                          {{0, 1, 0}, {1, 2, 1}, {2, 3, 1}}),
                               t())),
            (ints{5, 4, 2, 3}));
}

TEST(SearchPlan, RarestFirstFindsARingWithATail) {
  // A triangle 0 1 2 with a tail 3 at 0, labels 0 but for the tail.  In t the
  // triangle 0 1 2 lacks the tail, so that any order must come to the second.
  const graph_ptr g =
      make_graph({0, 0, 0, 1}, {{0, 1}, {1, 2}, {0, 2}, {0, 3}});
  EXPECT_EQ(
      found_rarest_first(
          g, database_of(make_graph(
                 {0, 0, 0, 0, 0, 0, 1},
                 {{0, 1}, {1, 2}, {0, 2}, {3, 4}, {4, 5}, {3, 5}, {3, 6}}))),
      (ints{3, 4, 5, 6}));
}

TEST(SearchPlan, RarestFirstTakesOneVertexToo) {
  EXPECT_EQ(found_rarest_first(make_graph({3}, {}),
                               database_of(make_graph({0, 3}, {{0, 1}}))),
            ints{1});
}

// Where a plan finds g in each graph of a list, by the list's profiles.
static std::vector<ints> found_in_list(const graph_ptr &g,
                                       const graph_list_ptr &graphs) {
  const graph_profiles profiles(graphs.get());
  const ints order = identity_of(g->vs);
  search_plan plan(g.get(), order.data());
  std::vector<ints> images;
  for (int i = 0; i < graphs->count; i++) {
    ints image(static_cast<size_t>(g->vs), -7);
    images.push_back(plan.find(profiles, i, image.data()) ? image : ints());
  }
  return images;
}

TEST(SearchPlan, FindsInAListWhatItFindsInItsGraphs) {
  const graph_ptr g = make_graph({0, 1, 0}, {{0, 1}, {1, 2}});
  EXPECT_EQ(found_in_list(
                g, database_of(
                       make_graph({0, 1, 0}, {{0, 1}, {1, 2}}), // itself
                       make_graph({1, 0, 1}, {{0, 1}, {1, 2}}), // other labels
                       make_graph({0, 1}, {{0, 1}}),            // too small
                       make_graph({}, {}),
                       make_graph({1, 1, 0, 0}, {{0, 1}, {1, 2}, {1, 3}}))),
            (std::vector<ints>{{0, 1, 2}, {}, {}, {}, {2, 1, 3}}));
}

TEST(SearchPlan, FindsOneVertexInAList) {
  EXPECT_EQ(found_in_list(make_graph({3}, {}),
                          database_of(make_graph({0, 3, 3}, {{0, 1}, {1, 2}}),
                                      make_graph({0, 4}, {{0, 1}}))),
            (std::vector<ints>{{1}, {}}));
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
