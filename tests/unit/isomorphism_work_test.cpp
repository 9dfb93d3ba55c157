#include "reference/cl/isomorphism_work.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "reference/cl/isomorphism.h"
#include "reference/cl/isomorphism_calls.h"
#include "support/fatal.h"
#include "support/graphs.h"

namespace kestro {

static void expect_clean_matrix(int n) {
  int **matrix = graph_label_matrix(n);
  for (int w = 0; w < n; w++)
    for (int y = 0; y < n; y++)
      EXPECT_EQ(matrix[w][y], -1) << w << " " << y;
}

TEST(IsomorphismWork, MatrixGrowsAndServesSmallerGraphs) {
  graph_free_label_matrix();
  int **const small = graph_label_matrix(2);
  EXPECT_EQ(small[1], small[0] + 2);
  expect_clean_matrix(2);
  int **const large = graph_label_matrix(7);
  EXPECT_EQ(large[6], large[0] + 42);
  expect_clean_matrix(7);
  EXPECT_EQ(graph_label_matrix(3), large);
  EXPECT_EQ(graph_label_matrix(7), large);
  EXPECT_EQ(large[1], large[0] + 7);
}

TEST(IsomorphismWork, MatrixFollowsItsRowPointers) {
  graph_free_label_matrix();
  int **const matrix = graph_label_matrix(5);
  EXPECT_EQ(static_cast<void *>(matrix[0]), static_cast<void *>(matrix + 5));
}

TEST(IsomorphismWork, FreedMatrixComesBackClean) {
  graph_label_matrix(4);
  graph_free_label_matrix();
  graph_free_label_matrix();
  expect_clean_matrix(3);
}

TEST(IsomorphismWork, CallEndsWithACleanMatrix) {
  const graph_ptr g = complete_graph(4);
  {
    const shared_call call(g.get(), g.get());
    setup_isomorphism_work_area(&call.work);
    EXPECT_EQ(call.work.label_matrix[1][2], 0);
  }
  expect_clean_matrix(4);
}

TEST(IsomorphismWork, CallCleansUpWhenACheckUnwinds) {
  const graph_ptr g1 = make_graph({0, 0, 0, 0}, {{0, 1}, {2, 3}});
  const graph_ptr g2 = complete_graph(5);
  const auto search = [&] {
    const shared_call call(g1.get(), g2.get());
    setup_isomorphism_work_area(&call.work);
    isomorphism_and_order(&call.work, 0, 0);
  };
  EXPECT_THROW(search(), check_failure);
  expect_clean_matrix(5);
}

TEST(IsomorphismWork, CallUsesGivenArraysAndHasItsOwn) {
  const graph_ptr g = path_graph(3);
  int map[3];
  int order[3];
  const shared_call call(g.get(), g.get(), map, order);
  EXPECT_EQ(call.work.map, map);
  EXPECT_EQ(call.work.order, order);
  EXPECT_EQ(std::vector<int>(call.work.active, call.work.active + 3),
            (std::vector<int>{0, 0, 0}));
  const shared_call other(g.get(), g.get());
  EXPECT_NE(other.work.map, map);
  const isomorphism_work &own = other.work;
  std::fill_n(own.map, 3, 1);
  std::fill_n(own.order, 3, 2);
  std::fill_n(own.active, 3, 3);
  std::fill_n(own.mapped_nbrs1, 3, 4);
  std::fill_n(own.mapped_nbrs2, 3, 5);
  std::fill_n(own.used, 3, 6);
  EXPECT_EQ(own.map[2] * 100000 + own.order[2] * 10000 + own.active[2] * 1000 +
                own.mapped_nbrs1[2] * 100 + own.mapped_nbrs2[2] * 10 +
                own.used[2],
            123456);
}

TEST(IsomorphismWork, ActiveIsClearedForEveryCall) {
  const graph_ptr g = path_graph(3);
  {
    const shared_call call(g.get(), g.get());
    std::fill_n(call.work.active, 3, 1);
  }
  const shared_call call(g.get(), g.get());
  EXPECT_EQ(call.work.active[1], 0);
}

TEST(IsomorphismWork, LargerPatternDies) {
  const graph_ptr g1 = path_graph(3);
  const graph_ptr g2 = path_graph(2);
  const uint64_t calls = graph_isomorphism_calls();
  EXPECT_EQ(fatal_text([&] { shared_call(g1.get(), g2.get()); }),
            "isomorphism.c:N: g1 must be smaller than g2\n");
  EXPECT_EQ(graph_isomorphism_calls() - calls, 1u);
  expect_clean_matrix(4);
}

TEST(IsomorphismWork, DisabledVerticesDoNotCountTowardsTheSize) {
  const graph_ptr g1 = path_graph(3);
  const graph_ptr g2 = path_graph(2);
  graph_toggle(&g1->v[2]);
  EXPECT_NO_THROW(shared_call(g1.get(), g2.get()));
}

} // namespace kestro
