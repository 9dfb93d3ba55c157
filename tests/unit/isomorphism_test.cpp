#include "reference/cl/isomorphism_steps.h"

#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "graph/edge_marks.h"
#include "reference/cl/isomorphism.h"
#include "reference/cl/isomorphism_calls.h"
#include "reference/graph/edge_marks.h"
#include "support/graphs.h"

namespace kestro {

static std::vector<int> ints(const int *array, int n) {
  return std::vector<int>(array, array + n);
}

static std::vector<std::vector<int>> listed(const ksstack *maps, int vs) {
  std::vector<std::vector<int>> result;
  for (int i = 0; i < maps->count; i++)
    result.push_back(ints(static_cast<int *>(ksstack_at(maps, i)), vs));
  return result;
}

static void follow(const isomorphism_work &work,
                   const std::vector<int> &order) {
  std::copy(order.begin(), order.end(), work.order);
}

// Fixes u to w before the setup.
static void fix(const isomorphism_work &work, int u, int w) {
  work.active[u] = 1;
  work.map[u] = w;
}

// The expression of the check that run() fails, or "".
template <class Run> static std::string failed_check(Run run) {
  try {
    run();
  } catch (const check_failure &failure) {
    const std::string report = failure.what();
    const size_t begin = report.find('`') + 1;
    return report.substr(begin, report.rfind('\'') - begin);
  }
  return "";
}

TEST(Isomorphism, SetupCountsTheFixedPart) {
  const graph_ptr g1 = path_graph(4);
  const graph_ptr g2 =
      make_graph({0, 0, 0, 0, 0}, {{0, 1, 3}, {1, 2, 4}, {2, 3, 5}, {2, 4, 6}});
  const shared_call call(g1.get(), g2.get());
  const isomorphism_work &work = call.work;
  fix(work, 0, 1);
  fix(work, 2, 2);
  work.map[1] = 77;
  const isomorphism_start start = setup_isomorphism_work_area(&work);
  EXPECT_EQ(start.depth, 2);
  EXPECT_EQ(start.vertex, 1);
  EXPECT_EQ(ints(work.map, 4), (std::vector<int>{1, -1, 2, -1}));
  EXPECT_EQ(ints(work.used, 5), (std::vector<int>{0, 1, 1, 0, 0}));
  EXPECT_EQ(ints(work.mapped_nbrs1, 4), (std::vector<int>{0, 2, 0, 1}));
  EXPECT_EQ(ints(work.mapped_nbrs2, 5), (std::vector<int>{1, 1, 1, 1, 1}));
  EXPECT_EQ(ints(work.label_matrix[2], 5), (std::vector<int>{-1, 4, -1, 5, 6}));
  EXPECT_EQ(ints(work.label_matrix[0], 5),
            (std::vector<int>{-1, 3, -1, -1, -1}));
}

TEST(Isomorphism, SetupWithNothingFixedOrEverythingFixed) {
  const graph_ptr g = path_graph(2);
  const shared_call call(g.get(), g.get());
  isomorphism_start start = setup_isomorphism_work_area(&call.work);
  EXPECT_EQ(start.depth, 0);
  EXPECT_EQ(start.vertex, 0);
  fix(call.work, 0, 1);
  fix(call.work, 1, 0);
  start = setup_isomorphism_work_area(&call.work);
  EXPECT_EQ(start.depth, 2);
  EXPECT_EQ(start.vertex, -1);
}

TEST(Isomorphism, FixedVertexNeedsItsImage) {
  const graph_ptr g = path_graph(2);
  const shared_call call(g.get(), g.get());
  fix(call.work, 1, -1);
  EXPECT_EQ(failed_check([&] { setup_isomorphism_work_area(&call.work); }),
            "map[i] != -1");
}

TEST(Isomorphism, LabelAbsentFromG2FailsAtTheFirstDepth) {
  const graph_ptr g1 = make_graph({9, 0}, {{0, 1}});
  const graph_ptr g2 = complete_graph(4);
  const shared_call call(g1.get(), g2.get());
  setup_isomorphism_work_area(&call.work);
  const uint64_t before = graph_isomorphism_searches();
  EXPECT_EQ(isomorphism_and_order(&call.work, 0, 0), 0);
  EXPECT_EQ(graph_isomorphism_searches() - before, 1u);
}

TEST(Isomorphism, OrderGrowsFromTheLowestMatchedVertex) {
  // From 0 to its neighbour 3; then 0 has none left, nor have lower ones than
  // 3, whose first is 1; then 1 leads to 2, before 3 leads to 4.
  const graph_ptr g =
      make_graph({0, 1, 2, 3, 4}, {{0, 3}, {1, 3}, {1, 2}, {3, 4}});
  const shared_call call(g.get(), g.get());
  setup_isomorphism_work_area(&call.work);
  EXPECT_EQ(isomorphism_and_order(&call.work, 0, 0), 1);
  EXPECT_EQ(ints(call.work.order, 5), (std::vector<int>{0, 3, 1, 2, 4}));
  EXPECT_EQ(ints(call.work.map, 5), identity_of(5));
}

TEST(Isomorphism, PatternMustBeConnected) {
  const graph_ptr g1 = make_graph({0, 0, 0, 0}, {{0, 1}, {2, 3}});
  const graph_ptr g2 = complete_graph(4);
  const shared_call call(g1.get(), g2.get());
  setup_isomorphism_work_area(&call.work);
  EXPECT_EQ(failed_check([&] { isomorphism_and_order(&call.work, 0, 0); }),
            "next_u != -1");
}

TEST(Isomorphism, ByOrderWithAllFixedTriesNoCandidate) {
  const graph_ptr g = path_graph(3);
  const shared_call call(g.get(), g.get());
  for (int u = 0; u < 3; u++)
    fix(call.work, u, 2 - u);
  const isomorphism_start start = setup_isomorphism_work_area(&call.work);
  follow(call.work, {0, 1, 2});
  const uint64_t before = graph_isomorphism_searches();
  EXPECT_EQ(isomorphism_by_order(&call.work, 0), 1);
  EXPECT_EQ(isomorphism_by_order(&call.work, start.depth), 1);
  EXPECT_EQ(graph_isomorphism_searches() - before, 2u);
  EXPECT_EQ(ints(call.work.map, 3), (std::vector<int>{2, 1, 0}));
}

TEST(Isomorphism, ByOrderPassesFixedPositionsBy) {
  const graph_ptr g = path_graph(4);
  const shared_call call(g.get(), g.get());
  fix(call.work, 2, 1);
  setup_isomorphism_work_area(&call.work);
  follow(call.work, {2, 1, 3, 0});
  EXPECT_EQ(isomorphism_by_order(&call.work, 0), 1);
  EXPECT_EQ(ints(call.work.map, 4), (std::vector<int>{3, 2, 1, 0}));
}

TEST(Isomorphism, PassedPositionsMustBeMappedAndUsed) {
  const graph_ptr g = path_graph(2);
  const shared_call call(g.get(), g.get());
  fix(call.work, 0, 0);
  setup_isomorphism_work_area(&call.work);
  follow(call.work, {0, 1});
  const ksstack_ptr maps(ksstack_new(1, 2 * sizeof(int)));
  call.work.used[0] = 0;
  EXPECT_EQ(failed_check([&] { all_isomorphisms(&call.work, 0, maps.get()); }),
            "used[map[u]]");
  call.work.map[0] = -1;
  EXPECT_EQ(failed_check([&] { isomorphism_by_order(&call.work, 0); }),
            "map[u] != -1");
  EXPECT_EQ(failed_check([&] { all_isomorphisms(&call.work, 0, maps.get()); }),
            "map[u] != -1");
}

TEST(Isomorphism, TriangleHasSixMappingsIdentityFirst) {
  const graph_ptr g = ring_graph(3);
  const shared_call call(g.get(), g.get());
  setup_isomorphism_work_area(&call.work);
  follow(call.work, {0, 1, 2});
  const ksstack_ptr maps(ksstack_new(1, 3 * sizeof(int)));
  all_isomorphisms(&call.work, 0, maps.get());
  EXPECT_EQ(
      listed(maps.get(), 3),
      (std::vector<std::vector<int>>{
          {0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}}));
  EXPECT_EQ(ints(call.work.map, 3), (std::vector<int>{-1, -1, -1}));
  EXPECT_EQ(ints(call.work.used, 3), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(ints(call.work.mapped_nbrs1, 3), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(ints(call.work.mapped_nbrs2, 3), (std::vector<int>{0, 0, 0}));
}

TEST(Isomorphism, SearchesAgreeWithAllInjections) {
  test_rng rng(11);
  int found = 0;
  for (int round = 0; round < 300; round++) {
    const random_graph_shape shape1 = {.vs = 1 + round % 4,
                                       .extra_edges = random_below(rng, 3)};
    const random_graph_shape shape2 = {.vs = 4 + round % 3,
                                       .extra_edges = random_below(rng, 9),
                                       .connected = round % 2 == 0};
    const graph_ptr g1 = random_graph(rng, shape1);
    const graph_ptr g2 = random_graph(rng, shape2);
    const auto expected = naive_maps(g1.get(), g2.get());
    const shared_call call(g1.get(), g2.get());
    setup_isomorphism_work_area(&call.work);
    const int result = isomorphism_and_order(&call.work, 0, 0);
    ASSERT_EQ(result, !expected.empty()) << round;
    found += result;
    const std::vector<int> map = ints(call.work.map, g1->vs);
    if (result) {
      ASSERT_TRUE(is_mapping(g1.get(), g2.get(), map)) << round;
    } else {
      ASSERT_EQ(map, std::vector<int>(map.size(), -1)) << round;
    }

    // Any order must do, connected or not.
    follow(call.work, random_permutation(rng, g1->vs));
    setup_isomorphism_work_area(&call.work);
    const ksstack_ptr maps(ksstack_new(1, g1->vs * 4));
    all_isomorphisms(&call.work, 0, maps.get());
    auto all = listed(maps.get(), g1->vs);
    ASSERT_EQ(isomorphism_by_order(&call.work, 0), !all.empty());
    if (!all.empty()) {
      ASSERT_EQ(ints(call.work.map, g1->vs), all.front()) << round;
    }
    std::sort(all.begin(), all.end());
    ASSERT_EQ(all, expected) << round;
  }
  EXPECT_GT(found, 50);
  EXPECT_LT(found, 250);
}

TEST(Isomorphism, MatrixAndListChecksAgree) {
  test_rng rng(12);
  int passed[2] = {0, 0};
  for (int round = 0; round < 400; round++) {
    const graph_ptr g1 =
        random_graph(rng, {.vs = 4, .extra_edges = 2, .vlabels = 1});
    const graph_ptr g2 =
        random_graph(rng, {.vs = 5, .extra_edges = 6, .vlabels = 1});
    const shared_call call(g1.get(), g2.get());
    const std::vector<int> to = random_permutation(rng, 5);
    fix(call.work, 0, to[0]);
    fix(call.work, 1, to[1]);
    setup_isomorphism_work_area(&call.work);
    int expected = 1;
    for (const int x : {0, 1})
      if (graph_has_edge(g1.get(), 2, x))
        expected &= graph_edge_label(g2.get(), to[2], call.work.map[x]) ==
                    graph_edge_label(g1.get(), 2, x);
    EXPECT_EQ(graph_check_edges_by_matrix(&call.work, 2, to[2]), expected);
    EXPECT_EQ(
        graph_check_edges_by_lists(g1.get(), g2.get(), call.work.map, 2, to[2]),
        expected);
    passed[expected]++;
  }
  EXPECT_GT(passed[0], 50);
  EXPECT_GT(passed[1], 50);
}

TEST(Isomorphism, ListCheckComparesTheLabelsOfTheOtherEnd) {
  const graph_ptr g1 = make_graph({0, 1}, {{0, 1}});
  const graph_ptr g2 = make_graph({0, 2}, {{0, 1}});
  const int map[] = {-1, 1};
  EXPECT_EQ(graph_check_edges_by_lists(g1.get(), g2.get(), map, 0, 0), 0);
  EXPECT_EQ(graph_check_edges_by_lists(g1.get(), g1.get(), map, 0, 0), 1);
}

TEST(Isomorphism, DisabledEdgeOfThePatternIsNotRequired) {
  const graph_ptr g1 = ring_graph(3);
  const graph_ptr g2 = path_graph(3);
  ASSERT_EQ(graph_disable_edge_between(g1.get(), 0, 1), 1);
  const shared_call call(g1.get(), g2.get());
  setup_isomorphism_work_area(&call.work);
  EXPECT_EQ(isomorphism_and_order(&call.work, 0, 0), 1);
  EXPECT_EQ(ints(call.work.map, 3), (std::vector<int>{0, 2, 1}));
  EXPECT_EQ(ints(call.work.order, 3), (std::vector<int>{0, 2, 1}));
  EXPECT_EQ(graph_check_edges_by_lists(g1.get(), g2.get(), call.work.map, 0, 0),
            1);
}

TEST(Isomorphism, CandidateTestsInTurn) {
  const graph_ptr g1 = make_graph({0, 0, 0}, {{0, 1, 5}, {0, 2, 5}});
  const graph_ptr g2 =
      make_graph({0, 0, 0, 1, 0}, {{0, 1, 5}, {0, 2, 6}, {0, 3, 5}, {1, 2, 5}});
  const shared_call call(g1.get(), g2.get());
  const isomorphism_work *work = &call.work;
  setup_isomorphism_work_area(work);
  EXPECT_TRUE(isomorphism_candidate(work, 0, 2, 0, 0));
  EXPECT_FALSE(isomorphism_candidate(work, 0, 4, 0, 0)); // too few neighbours
  isomorphism_map_vertex(work, 0, 0);
  EXPECT_FALSE(isomorphism_candidate(work, 1, 1, 0, 1)); // used
  EXPECT_TRUE(isomorphism_candidate(work, 1, 1, 1, 1));
  EXPECT_FALSE(isomorphism_candidate(work, 1, 1, 2, 1)); // other edge label
  EXPECT_FALSE(isomorphism_candidate(work, 1, 1, 3, 1)); // other vertex label
  EXPECT_FALSE(isomorphism_candidate(work, 1, 0, 4, 1)); // no used neighbour
  isomorphism_unmap_vertex(work, 0);
  EXPECT_EQ(work->map[0], -1);
  EXPECT_EQ(work->used[0], 0);
  EXPECT_EQ(ints(work->mapped_nbrs2, 5), (std::vector<int>{0, 0, 0, 0, 0}));
}

} // namespace kestro
