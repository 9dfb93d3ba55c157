#include "reference/cl/next_isomorphism.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "graph/connectivity.h"
#include "reference/cl/isomorphism_calls.h"
#include "support/fatal.h"
#include "support/graphs.h"

namespace kestro {

// All mappings that follow map, one call each; map is left as the last call
// leaves it.
static std::vector<std::vector<int>> following(const graph *g1, const graph *g2,
                                               const std::vector<int> &order,
                                               std::vector<int> *map) {
  std::vector<std::vector<int>> found;
  while (graph_next_isomorphism(g1, g2, order.data(), map->data()))
    found.push_back(*map);
  return found;
}

// The naive mappings in lexicographic order of the images along order.
static std::vector<std::vector<int>>
naive_along(const graph *g1, const graph *g2, const std::vector<int> &order) {
  auto maps = naive_maps(g1, g2);
  std::sort(maps.begin(), maps.end(), [&](const auto &a, const auto &b) {
    for (const int u : order)
      if (a[static_cast<size_t>(u)] != b[static_cast<size_t>(u)])
        return a[static_cast<size_t>(u)] < b[static_cast<size_t>(u)];
    return false;
  });
  return maps;
}

TEST(NextIsomorphism, TriangleGivesSixInOrderThenNone) {
  const graph_ptr g = ring_graph(3);
  std::vector<int> map(3, -1);
  EXPECT_EQ(
      following(g.get(), g.get(), {0, 1, 2}, &map),
      (std::vector<std::vector<int>>{
          {0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}}));
  EXPECT_EQ(map, (std::vector<int>{-1, -1, -1}));
  EXPECT_EQ(graph_next_isomorphism(g.get(), g.get(), identity_of(3).data(),
                                   map.data()),
            1);
  EXPECT_EQ(map, identity_of(3));
}

TEST(NextIsomorphism, MappingsComeInLexicographicOrderAlongTheOrder) {
  test_rng rng(13);
  size_t most = 0;
  for (int round = 0; round < 200; round++) {
    const graph_ptr g1 =
        random_graph(rng, {.vs = 1 + round % 4, .extra_edges = round % 3});
    const graph_ptr g2 = random_graph(rng, {.vs = 4 + round % 3,
                                            .extra_edges = random_below(rng, 9),
                                            .vlabels = 1,
                                            .elabels = 1 + round % 2});
    std::fill_n(g1->vlabel, g1->vs, 0);
    const std::vector<int> order = random_permutation(rng, g1->vs);
    std::vector<int> map(order.size(), -1);
    const auto expected = naive_along(g1.get(), g2.get(), order);
    ASSERT_EQ(following(g1.get(), g2.get(), order, &map), expected) << round;
    most = std::max(most, expected.size());
  }
  EXPECT_GT(most, 20u);
}

TEST(NextIsomorphism, AutomorphismsAlongBreadthFirstOrder) {
  const graph_ptr g = ring_graph(6);
  std::vector<int> order(6);
  graph_bfs_order(g.get(), order.data());
  std::vector<int> map(6, -1);
  const auto found = following(g.get(), g.get(), order, &map);
  EXPECT_EQ(found.size(), 12u);
  EXPECT_EQ(found.front(), identity_of(6));
}

TEST(NextIsomorphism, ResumesWithTheLastVertexUnmapped) {
  const graph_ptr g = complete_graph(3);
  std::vector<int> map = {1, 2, -1};
  testing::internal::CaptureStderr();
  EXPECT_EQ(graph_next_isomorphism(g.get(), g.get(), identity_of(3).data(),
                                   map.data()),
            1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(map, (std::vector<int>{1, 2, 0}));
}

TEST(NextIsomorphism, IrregularReentryWarnsAndGoesOn) {
  const graph_ptr g = complete_graph(4);
  std::vector<int> map = {3, 1, -1, -1};
  testing::internal::CaptureStderr();
  EXPECT_EQ(graph_next_isomorphism(g.get(), g.get(), identity_of(4).data(),
                                   map.data()),
            1);
  EXPECT_EQ(masked_line(testing::internal::GetCapturedStderr()),
            "isomorphism.c:N: irregular reentry 2\n");
  EXPECT_EQ(map, (std::vector<int>{3, 1, 0, 2}));
}

TEST(NextIsomorphism, HoleBeforeMappedPositionsStartsThoseAgain) {
  const graph_ptr g = complete_graph(3);
  std::vector<int> map = {-1, 0, 2};
  EXPECT_EQ(graph_next_isomorphism(g.get(), g.get(), identity_of(3).data(),
                                   map.data()),
            1);
  EXPECT_EQ(map, identity_of(3));
}

TEST(NextIsomorphism, RegularCallsWarnOfNothing) {
  const graph_ptr g = path_graph(4);
  std::vector<int> map(4, -1);
  testing::internal::CaptureStderr();
  EXPECT_EQ(following(g.get(), g.get(), identity_of(4), &map).size(), 2u);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(NextIsomorphism, NoMappingAtAll) {
  const graph_ptr g1 = make_graph({1}, {});
  const graph_ptr g2 = path_graph(3);
  std::vector<int> map = {-1};
  EXPECT_TRUE(following(g1.get(), g2.get(), {0}, &map).empty());
}

TEST(NextIsomorphism, LargerPatternDies) {
  const graph_ptr g1 = path_graph(3);
  const graph_ptr g2 = path_graph(2);
  std::vector<int> map(3, -1);
  EXPECT_EQ(
      fatal_text([&] { following(g1.get(), g2.get(), identity_of(3), &map); }),
      "isomorphism.c:N: g1 must be smaller than g2\n");
}

TEST(NextIsomorphism, MatrixIsCleanBetweenCalls) {
  const graph_ptr g = complete_graph(3);
  std::vector<int> map(3, -1);
  graph_next_isomorphism(g.get(), g.get(), identity_of(3).data(), map.data());
  int **matrix = graph_label_matrix(3);
  for (int w = 0; w < 3; w++)
    for (int y = 0; y < 3; y++)
      EXPECT_EQ(matrix[w][y], -1);
}

} // namespace kestro
