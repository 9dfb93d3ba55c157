#include "cl/domain_search.h"

#include <gtest/gtest.h>

#include "cl/search_plan.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;
using answer = domain_search::answer;

static xvector<int> depths_of(const graph_ptr &g) {
  const ints depths = identity_of(g->vs);
  return {depths.begin(), depths.end()};
}

// The first image of g in t with that root, along the numbers of its vertices;
// empty for none.
static ints found(const graph_ptr &g, const graph_ptr &t, int root) {
  domain_search search(nullptr);
  search.set(g.get(), depths_of(g), t.get());
  if (search.find(root) != answer::found)
    return {};
  return {search.image(), search.image() + g->vs};
}

static graph_ptr complete_bipartite(int m, int n) {
  std::vector<test_edge> edges;
  for (int u = 0; u < m; u++)
    for (int w = 0; w < n; w++)
      edges.push_back({u, m + w});
  return make_graph(ints(static_cast<size_t>(m + n), 0), edges);
}

// A complete graph of n vertices beside a path of as many, and a second one.
static graph_ptr clique_with_others(int n) {
  std::vector<test_edge> edges = edges_of(complete_graph(n).get());
  for (int u = n; u + 1 < 3 * n; u++)
    if (u + 1 != 2 * n)
      edges.push_back({u, u + 1});
  return make_graph(ints(static_cast<size_t>(3 * n), 0), edges);
}

TEST(DomainSearch, FindsTheFirstImageOfARoot) {
  const graph_ptr g = path_graph(3);
  const graph_ptr t = ring_graph(5);
  EXPECT_EQ(found(g, t, 0), (ints{0, 1, 2}));
  EXPECT_EQ(found(g, t, 2), (ints{2, 1, 0}));
  EXPECT_EQ(found(g, t, 4), (ints{4, 0, 1}));
}

TEST(DomainSearch, LabelsMustBeEqual) {
  const graph_ptr g = make_graph({0, 1, 0}, {{0, 1, 2}, {1, 2, 3}});
  const graph_ptr t =
      make_graph({0, 1, 0, 0}, {{0, 1, 3}, {1, 2, 3}, {1, 3, 2}});
  EXPECT_EQ(found(g, t, 0), ints());
  EXPECT_EQ(found(g, t, 1), ints());
  EXPECT_EQ(found(g, t, 3), (ints{3, 1, 0}));
  EXPECT_EQ(found(make_graph({0, 7}, {{0, 1, 2}}), t, 0), ints());
}

TEST(DomainSearch, RootMayBeTheLastOfItsTwins) {
  // The leaves 1 to 5 are twins; the others are taken in ascending order.
  EXPECT_EQ(found(make_graph({0, 0, 0, 0}, {{0, 1}, {1, 2}, {1, 3}}),
                  star_graph(6), 2),
            (ints{2, 0, 1, 3}));
  EXPECT_EQ(found(make_graph({0, 0, 0, 0}, {{0, 1}, {1, 2}, {1, 3}}),
                  star_graph(6), 5),
            (ints{5, 0, 1, 2}));
  EXPECT_EQ(found(complete_graph(4), complete_graph(5), 2), (ints{2, 0, 1, 3}));
}

TEST(DomainSearch, ClassesOfTwinsInterleave) {
  // The hub 0 has leaves 1, 3, 5 without more and 2, 4 with an edge of another
  // label to 6: the first leaves are 1, 2, 3, 4.
  const graph_ptr t =
      make_graph({0, 0, 0, 0, 0, 0, 0},
                 {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {0, 5}, {2, 6}, {4, 6}});
  EXPECT_EQ(found(star_graph(5), t, 0), (ints{0, 1, 2, 3, 4}));
}

TEST(DomainSearch, RegionReachesAsFarAsThePattern) {
  // The branch of the path lies as far from the root as the pattern's.
  const graph_ptr g =
      make_graph(ints(6, 0), {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {3, 5}});
  const graph_ptr t = make_graph(
      ints(9, 0),
      {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 5}, {5, 6}, {4, 7}, {6, 8}});
  EXPECT_EQ(found(g, t, 0), ints());
  EXPECT_EQ(found(g, t, 1), (ints{1, 2, 3, 4, 5, 7}));
  EXPECT_EQ(found(g, t, 8), (ints{8, 6, 5, 4, 3, 7}));
  EXPECT_EQ(found(g, t, 6), ints());
}

TEST(DomainSearch, ComponentsThatCannotHoldThePatternAreExcluded) {
  const graph_ptr t = clique_with_others(5);
  const graph_ptr g = path_graph(6);
  domain_search search(nullptr);
  search.set(g.get(), depths_of(g), t.get());
  EXPECT_FALSE(search.excludes(0));
  EXPECT_EQ(search.find(0), answer::none);
  EXPECT_TRUE(search.excludes(0));
  EXPECT_TRUE(search.excludes(4));
  EXPECT_FALSE(search.excludes(7));
  EXPECT_EQ(search.find(7), answer::none);
  EXPECT_EQ(search.assignments(), 0);
}

TEST(DomainSearch, TwinOfAFailedRootIsExcluded) {
  // A clique with a tail: no path of all nine vertices starts in the clique.
  std::vector<test_edge> edges = edges_of(complete_graph(6).get());
  edges.insert(edges.end(), {{0, 6}, {6, 7}, {0, 8}});
  const graph_ptr t = make_graph(ints(9, 0), edges);
  const graph_ptr g = path_graph(9);
  domain_search search(nullptr);
  search.set(g.get(), depths_of(g), t.get());
  EXPECT_EQ(search.find(3), answer::none);
  EXPECT_TRUE(search.excludes(1));
  EXPECT_TRUE(search.excludes(5));
}

// The assignments that all roots of t take; there is no mapping.
static int64_t assignments_to_refute(const graph_ptr &g, const graph_ptr &t) {
  domain_search search(nullptr);
  search.set(g.get(), depths_of(g), t.get());
  for (int root = 0; root < t->vs; root++)
    EXPECT_EQ(search.find(root), answer::none) << root;
  return search.assignments();
}

TEST(DomainSearch, PathWithoutRoomInABipartiteGraphIsRefutedAtOnce) {
  for (int m = 2; m <= 20; m++)
    EXPECT_LE(assignments_to_refute(path_graph(2 * m + 2),
                                    complete_bipartite(m, m + 2)),
              2)
        << m;
}

TEST(DomainSearch, PathsInACliqueWithTailsTakeFewAssignments) {
  // Two tails of two vertices: a path of all n + 4 is there, but not one of n +
  // 5 where the second tail branches.
  for (int n = 4; n <= 20; n += 4) {
    std::vector<test_edge> edges = edges_of(complete_graph(n).get());
    edges.insert(
        edges.end(),
        {{0, n}, {n, n + 1}, {1, n + 2}, {n + 2, n + 3}, {n + 2, n + 4}});
    const graph_ptr t = make_graph(ints(static_cast<size_t>(n + 5), 0), edges);
    EXPECT_EQ(found(path_graph(n + 4), t, n + 1).size(),
              static_cast<size_t>(n + 4));
    EXPECT_LE(assignments_to_refute(path_graph(n + 5), t), 40 * n) << n;
  }
}

TEST(DomainSearch, WhatIsRememberedSparesTheFactorial) {
  // An odd ring against two cliques that share a vertex: every vertex but that
  // one is in a class of twins, and the ring would have to pass it twice.
  for (const int n : {5, 7, 9, 11}) {
    std::vector<test_edge> edges = edges_of(complete_graph(n).get());
    for (int u = n - 1; u < 2 * n - 1; u++)
      for (int w = n; w < 2 * n - 1; w++)
        if (u < w)
          edges.push_back({u, w});
    const graph_ptr t =
        make_graph(ints(static_cast<size_t>(2 * n - 1), 0), edges);
    EXPECT_LE(assignments_to_refute(ring_graph(n + 1), t), 20 * n * n) << n;
  }
}

TEST(DomainSearch, TooLargeAPatternIsNotSearchedFor) {
  const graph_ptr g = path_graph(1025);
  const graph_ptr t = ring_graph(1100);
  domain_search search(nullptr);
  search.set(g.get(), depths_of(g), t.get());
  EXPECT_EQ(search.find(0), answer::too_large);
  EXPECT_FALSE(search.excludes(0));
  search_plan plan(g.get(), identity_of(1025).data());
  plan.memory().patience = 0;
  ints image(1025);
  EXPECT_TRUE(plan.find(t.get(), image.data()));
  EXPECT_EQ(image, identity_of(1025));
}

TEST(DomainSearch, PlanTakesItAfterALimit) {
  const graph_ptr g = path_graph(26);
  const graph_ptr t = complete_bipartite(12, 14);
  search_plan plan(g.get(), identity_of(26).data());
  ints image(26);
  EXPECT_FALSE(plan.find(t.get(), image.data()));
  ASSERT_NE(plan.memory().hard.get(), nullptr);
  EXPECT_LE(plan.memory().hard.get()->assignments(), 26);
  // An easy search does without.
  search_plan other(g.get(), identity_of(26).data());
  EXPECT_TRUE(other.find(path_graph(30).get(), image.data()));
  EXPECT_FALSE(other.find(ring_graph(25).get(), image.data()));
  EXPECT_EQ(other.memory().hard.get(), nullptr);
}

} // namespace kestro
