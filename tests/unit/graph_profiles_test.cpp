#include "cl/graph_profiles.h"

#include <bit>

#include <gtest/gtest.h>

#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// The profile of u in g.
static vertex_profile at(const graph_ptr &g, int u) {
  return profile_of(g.get(), u);
}

// A hub 0 of n like leaves, and a fan: a vertex 0 with one neighbour 1 that has
// n further leaves.
static graph_ptr hub(int n) { return star_graph(n + 1); }
static graph_ptr fan(int n) {
  std::vector<test_edge> edges = {{0, 1}};
  for (int i = 0; i < n; i++)
    edges.push_back({1, 2 + i});
  return make_graph(ints(static_cast<size_t>(n) + 2, 0), edges);
}

static bool is_equal(const vertex_profile &a, const vertex_profile &b) {
  return a.edges == b.edges && a.paths == b.paths && a.kinds == b.kinds;
}

TEST(VertexProfile, CoversWhatHasNoFurtherBits) {
  const vertex_profile some = {0b0110, 0b0011, 0b1000};
  EXPECT_TRUE(some.covers(some));
  EXPECT_TRUE(some.covers({}));
  EXPECT_FALSE(vertex_profile().covers(some));
  EXPECT_TRUE(some.covers({0b0100, 0b0001, 0b1000}));
}

TEST(VertexProfile, CoversNeedsAllThreeSets) {
  const vertex_profile some = {0b0110, 0b0011, 0b1000};
  EXPECT_FALSE(some.covers({0b0111, 0, 0}));
  EXPECT_FALSE(some.covers({0, 0b0111, 0}));
  EXPECT_FALSE(some.covers({0, 0, 0b1001}));
}

TEST(ProfileOf, VertexWithoutEdgesHasNoBits) {
  EXPECT_TRUE(is_equal(at(make_graph({4}, {}), 0), {}));
}

TEST(ProfileOf, LikeEdgesFillOneGroupUpToTwo) {
  for (int n = 1; n <= 7; n++)
    EXPECT_EQ(std::popcount(at(hub(n), 0).edges), std::min(n, 2)) << n;
  const auto full = at(hub(2), 0).edges;
  EXPECT_EQ(full, decltype(full){3} << std::countr_zero(full));
  EXPECT_EQ(std::countr_zero(full) % 2, 0);
  EXPECT_EQ(at(hub(9), 0).edges, full);
}

TEST(ProfileOf, MoreOfOneKindCoversLess) {
  for (int n = 1; n <= 2; n++) {
    EXPECT_TRUE(at(hub(n), 0).covers(at(hub(n - 1), 0)));
    EXPECT_FALSE(at(hub(n - 1), 0).covers(at(hub(n), 0)));
  }
  // Two and more look the same.
  EXPECT_TRUE(at(hub(2), 0).covers(at(hub(5), 0)));
}

TEST(ProfileOf, LikePathsFillOneGroupUpToTwo) {
  EXPECT_EQ(at(fan(0), 0).paths, 0u);
  for (int n = 1; n <= 7; n++)
    EXPECT_EQ(std::popcount(at(fan(n), 0).paths), std::min(n, 2)) << n;
  EXPECT_TRUE(is_equal(at(fan(2), 0), at(fan(7), 0)));
}

TEST(ProfileOf, LikePathsAreOneKind) {
  EXPECT_EQ(at(fan(0), 0).kinds, 0u);
  for (int n = 1; n <= 7; n++)
    EXPECT_EQ(std::popcount(at(fan(n), 0).kinds), 1) << n;
}

TEST(ProfileOf, PathsDoNotGoBack) {
  EXPECT_EQ(at(path_graph(2), 0).paths, 0u);
  EXPECT_EQ(at(hub(5), 0).paths, 0u);
  // Around a triangle: one path each way.
  EXPECT_EQ(std::popcount(at(ring_graph(3), 0).paths), 2);
}

// The bits of all profiles of the middle vertex of 1 - 0 - 2 whose edge to 1
// has a label below n, and of its neighbour 1: what a label decides.
template <class Set>
static int distinct(int n, Set vertex_profile::*set, int u,
                    graph_ptr (*with_label)(int)) {
  std::vector<Set> seen;
  for (int label = 0; label < n; label++) {
    const Set bits = at(with_label(label), u).*set;
    if (std::find(seen.begin(), seen.end(), bits) == seen.end())
      seen.push_back(bits);
  }
  return static_cast<int>(seen.size());
}

// Labels are hashed, so only many of them tell that each of the labels counts.
TEST(ProfileOf, EveryLabelOfAnEdgeCounts) {
  const auto edge_label = [](int x) { return make_graph({0, 0}, {{0, 1, x}}); };
  const auto end_label = [](int x) { return make_graph({0, x}, {{0, 1}}); };
  EXPECT_GT(distinct(100, &vertex_profile::edges, 0, edge_label), 8);
  EXPECT_GT(distinct(100, &vertex_profile::edges, 0, end_label), 8);
  // Its own label does not: that is compared as it is.
  EXPECT_EQ(distinct(100, &vertex_profile::edges, 1, end_label), 1);
}

TEST(ProfileOf, EveryLabelOfAPathCounts) {
  graph_ptr (*const with_labels[])(int) = {
      [](int x) {
        return make_graph({0, 0, 0}, {{0, 1, x}, {1, 2}});
      },
      [](int x) {
        return make_graph({0, x, 0}, {{0, 1}, {1, 2}});
      },
      [](int x) {
        return make_graph({0, 0, 0}, {{0, 1}, {1, 2, x}});
      },
      [](int x) {
        return make_graph({0, 0, x}, {{0, 1}, {1, 2}});
      }};
  for (const auto with_label : with_labels) {
    EXPECT_GT(distinct(100, &vertex_profile::paths, 0, with_label), 8);
    EXPECT_GT(distinct(100, &vertex_profile::kinds, 0, with_label), 16);
  }
}

TEST(GraphProfiles, HoldTheProfileOfEveryVertex) {
  test_rng rng(3);
  graph_list_ptr graphs(graph_list_new());
  for (int i = 0; i < 20; i++)
    graph_list_push(
        random_graph(rng, {1 + random_below(rng, 9), 6, 3, 2, false}),
        graphs.get());
  const graph_profiles profiles(graphs.get());
  for (int i = 0; i < graphs->count; i++) {
    const graph *g = graph_list_at(graphs.get(), i);
    ASSERT_EQ(profiles.graph_at(i), g);
    for (int u = 0; u < g->vs; u++)
      EXPECT_TRUE(is_equal(profiles.of(i)[u], profile_of(g, u)));
  }
}

// Hubs whose neighbours are of few kinds or of many, with leaves, edges among
// them and chains; most have more neighbours than are read one by one.
static graph_ptr graph_with_hubs(test_rng &rng) {
  const int leaves = 20 + random_below(rng, 200);
  constexpr int choices[] = {1, 2, 5, 1000};
  const int labels = choices[random_below(rng, 4)];
  const int elabels = choices[random_below(rng, 4)];
  const int hubs = 1 + random_below(rng, 3);
  ints vlabels(static_cast<size_t>(hubs), 0);
  std::vector<test_edge> edges;
  for (int u = 1; u < hubs; u++)
    edges.push_back({u - 1, u, 0});
  for (int u = hubs; u < hubs + leaves; u++) {
    vlabels.push_back(random_below(rng, labels));
    edges.push_back({random_below(rng, hubs), u, random_below(rng, elabels)});
    if (u > hubs && random_below(rng, 8) == 0)
      edges.push_back({u - 1, u, random_below(rng, elabels)});
  }
  return make_graph(vlabels, edges);
}

TEST(GraphProfiles, OfHubsAreThoseThatEverySlotGives) {
  test_rng rng(5);
  int full = 0;
  for (int i = 0; i < 300; i++) {
    const graph_list_ptr graphs = database_of(graph_with_hubs(rng));
    const graph_profiles profiles(graphs.get());
    const graph *g = profiles.graph_at(0);
    for (int u = 0; u < g->vs; u++) {
      ASSERT_TRUE(is_equal(profiles.of(0)[u], profile_of(g, u))) << i;
      full += ~profiles.of(0)[u].kinds == 0 && ~profiles.of(0)[u].paths == 0;
    }
  }
  EXPECT_GT(full, 30);
}

static ints vertices(const graph_profiles &profiles, int i, int vlabel) {
  const graph_profiles::candidates found = profiles.vertices(i, vlabel);
  const graph *g = profiles.graph_at(i);
  ints labelled;
  for (int k = 0; k < found.count; k++) {
    const int w = found.vertices ? found.vertices[k] : k;
    if (g->vlabel[w] == vlabel)
      labelled.push_back(w);
  }
  return labelled;
}

TEST(GraphProfiles, VerticesAreThoseWithTheLabelAscending) {
  const graph_list_ptr graphs =
      database_of(make_graph({2, 0, 2, 5, 0, 2}, {{0, 1}}), make_graph({}, {}),
                  make_graph({5, 5}, {{0, 1}}));
  const graph_profiles profiles(graphs.get());
  EXPECT_EQ(vertices(profiles, 0, 0), (ints{1, 4}));
  EXPECT_EQ(vertices(profiles, 0, 2), (ints{0, 2, 5}));
  EXPECT_EQ(vertices(profiles, 0, 5), (ints{3}));
  EXPECT_EQ(vertices(profiles, 2, 5), (ints{0, 1}));
}

TEST(GraphProfiles, LabelThatAGraphLacksHasNoVertices) {
  const graph_list_ptr graphs =
      database_of(make_graph({2, 0, 2}, {{0, 1}}), make_graph({}, {}),
                  make_graph({1, 7}, {{0, 1}}));
  const graph_profiles profiles(graphs.get());
  for (const int vlabel : {1, 3, 7, -1})
    EXPECT_EQ(vertices(profiles, 0, vlabel), ints()) << vlabel;
  EXPECT_EQ(vertices(profiles, 1, 0), ints());
  EXPECT_EQ(vertices(profiles, 2, 0), ints());
}

TEST(GraphProfiles, FrequencyCountsEdgesFromTheirFirstEnd) {
  const graph_list_ptr graphs = database_of(
      make_graph({0, 1, 1}, {{0, 1, 4}, {0, 2, 4}, {1, 2, 4}}),
      make_graph({1, 0}, {{0, 1, 4}}), make_graph({0, 1}, {{0, 1, 3}}));
  const graph_profiles profiles(graphs.get());
  EXPECT_EQ(profiles.frequency(0, 4, 1), 3);
  EXPECT_EQ(profiles.frequency(1, 4, 0), 3);
  EXPECT_EQ(profiles.frequency(1, 4, 1), 2); // one edge, seen from both ends
  EXPECT_EQ(profiles.frequency(0, 3, 1), 1);
  EXPECT_EQ(profiles.frequency(0, 4, 0), 0);
}

TEST(GraphProfiles, FrequencyIsNeverTooLow) {
  // More kinds of edges than there are counters.
  constexpr int kinds = 6000;
  graph_list_ptr graphs(graph_list_new());
  for (int label = 0; label < kinds; label++)
    for (int times = 0; times <= label % 3; times++)
      graph_list_push(make_graph({0, 1}, {{0, 1, label}}), graphs.get());
  const graph_profiles profiles(graphs.get());
  int exact = 0;
  for (int label = 0; label < kinds; label++) {
    EXPECT_GE(profiles.frequency(0, label, 1), 1 + label % 3);
    exact += profiles.frequency(0, label, 1) == 1 + label % 3;
  }
  EXPECT_GT(exact, kinds / 100);
  EXPECT_LT(exact, kinds);
}

TEST(GraphProfiles, OfNoGraphsAreEmpty) {
  const graph_list_ptr none(graph_list_new());
  EXPECT_EQ(graph_profiles(none.get()).frequency(0, 0, 0), 0);
}

TEST(GraphProfiles, VerticesOfLargeGraphsAreToldByLabel) {
  // Labels 0 to 6 in turn on a path of 70, and a small graph before it.
  ints labels(70);
  std::vector<test_edge> edges;
  for (int u = 0; u < 70; u++) {
    labels[static_cast<size_t>(u)] = u % 7;
    if (u > 0)
      edges.push_back({u - 1, u});
  }
  const graph_list_ptr list =
      database_of(path_graph(3), make_graph(labels, edges));
  const graph_profiles profiles(list.get());
  const auto [found, count] = profiles.vertices(1, 3);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(ints(found, found + count),
            (ints{3, 10, 17, 24, 31, 38, 45, 52, 59, 66}));
  EXPECT_EQ(profiles.vertices(1, 6).count, 10);
  EXPECT_EQ(profiles.vertices(1, 7).count, 0);
  EXPECT_EQ(profiles.vertices(0, 0).vertices, nullptr);
  EXPECT_EQ(profiles.vertices(0, 0).count, 3);
  EXPECT_TRUE(profiles.is_small(0));
  EXPECT_FALSE(profiles.is_small(1));
}

} // namespace kestro
