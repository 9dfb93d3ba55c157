#include "reference/cl/canonical_search.h"

#include <gtest/gtest.h>

#include "reference/cl/canonical.h"
#include "reference/cl/refine.h"
#include "reference/graph/graph.h"
#include "support/graphs.h"

namespace kestro::stepwise {

static adjmat_ptr filled(const graph *g) {
  adjmat_ptr m(cl_new_adjmat(g->vs));
  cl_graph_to_adjmat(g, m.get());
  return m;
}

static adjmat_ptr refined(const graph *g) {
  adjmat_ptr m = filled(g);
  cl_refine(m.get());
  return m;
}

static adjmat_ptr duplicate(const adjmat_ptr &m) {
  return adjmat_ptr(cl_dup_adjmat(m.get()));
}

static std::vector<int> perm_of(const adjmat *m) {
  return std::vector<int>(m->perm, m->perm + m->vs);
}

static void set_perm(adjmat *m, const std::vector<int> &perm) {
  for (int i = 0; i < m->vs; i++) {
    m->perm[i] = perm[static_cast<size_t>(i)];
    m->iperm[m->perm[i]] = i;
  }
}

// The strict lower triangle, row by row, as perm arranges it.
static std::vector<int> triangle(const adjmat *m,
                                 const std::vector<int> &perm) {
  std::vector<int> cells;
  for (size_t i = 0; i < perm.size(); i++)
    for (size_t j = 0; j < i; j++)
      cells.push_back(m->rows[perm[i]][perm[j]]);
  return cells;
}

TEST(StepwiseSearch, ComparesTheFirstUnequalCellOfTheRows) {
  const graph_ptr g = make_graph({0, 0, 0, 0}, {{0, 1, 1}, {1, 2, 4}, {2, 3}});
  const adjmat_ptr a = filled(g.get());
  const adjmat_ptr b = duplicate(a);
  EXPECT_EQ(compare_adjmat_parts_from_to(a.get(), b.get(), 0, 0), 0);
  set_perm(b.get(), {1, 2, 0, 3}); // cell (1, 0) is 5 instead of 2
  EXPECT_EQ(compare_adjmat_parts_from_to(a.get(), b.get(), 0, 0), -3);
  EXPECT_EQ(compare_adjmat_parts_from_to(b.get(), a.get(), 0, 0), 3);
  set_perm(b.get(), {1, 0, 2, 3}); // row 2 is 5 0 instead of 0 5
  EXPECT_EQ(compare_adjmat_parts_from_to(a.get(), b.get(), 0, 0), -5);
}

TEST(StepwiseSearch, ComparesOnlyTheRowsOfTheParts) {
  const adjmat_ptr a = refined(path_graph(5).get()); // 2 | 1 3 | 0 4
  const adjmat_ptr b = duplicate(a);
  set_perm(b.get(), {2, 1, 3, 4, 0});
  EXPECT_EQ(compare_adjmat_parts_from_to(a.get(), b.get(), 0, 1), 0);
  EXPECT_EQ(compare_adjmat_parts_from_to(a.get(), b.get(), 1, 1), 0);
  EXPECT_EQ(compare_adjmat_parts_from_to(a.get(), b.get(), 2, 2), 1);
  EXPECT_EQ(compare_adjmat_parts_from_to(a.get(), b.get(), 0, 2), 1);
}

TEST(StepwiseSearchDeathTest, ComparedSizesMustAgree) {
  const adjmat_ptr a = filled(path_graph(2).get());
  const adjmat_ptr b = filled(path_graph(3).get());
  EXPECT_DEATH(compare_adjmat_parts_from_to(a.get(), b.get(), 0, 0),
               "a->vs == b->vs");
}

TEST(StepwiseSearch, SinglePositionHasOneArrangement) {
  const adjmat_ptr m = refined(path_graph(3).get());
  save_adjmat_perm(m.get());
  EXPECT_FALSE(next_part_permutation(m.get(), 0));
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{1, 0, 2}));
}

TEST(StepwiseSearch, PartRunsThroughItsArrangementsAndBack) {
  const adjmat_ptr m = filled(complete_graph(3).get());
  set_perm(m.get(), {1, 2, 0});
  save_adjmat_perm(m.get());
  const std::vector<std::vector<int>> following = {
      {2, 0, 1}, {2, 1, 0}, {0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}};
  for (const std::vector<int> &perm : following) {
    EXPECT_EQ(next_part_permutation(m.get(), 0), perm != following.back());
    EXPECT_EQ(perm_of(m.get()), perm);
    for (int i = 0; i < 3; i++)
      EXPECT_EQ(m->iperm[m->perm[i]], i);
  }
}

TEST(StepwiseSearch, PartAdvancesAlone) {
  const adjmat_ptr m = refined(path_graph(5).get());
  save_adjmat_perm(m.get());
  EXPECT_TRUE(next_part_permutation(m.get(), 1));
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{2, 3, 1, 0, 4}));
  EXPECT_FALSE(next_part_permutation(m.get(), 1));
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{2, 1, 3, 0, 4}));
}

// What the exhaustive search finds from the refined graph.
static adjmat_ptr exhaustive_best(const adjmat_ptr &m) {
  adjmat_ptr best = duplicate(m);
  save_adjmat_perm(m.get());
  compare_adjmat_parts(m.get(), 0, best.get());
  return best;
}

// The greatest triangle over all orders that keep every part in its place.
static std::vector<int> greatest_triangle(const adjmat *m) {
  std::vector<int> greatest;
  std::vector<int> perm = identity_of(m->vs);
  do {
    bool fits = true;
    for (int i = 0; i < m->vs && fits; i++) {
      const int part = m->vertex[perm[static_cast<size_t>(i)]].part;
      fits = m->part[part] <= i && i < m->part[part + 1];
    }
    if (fits)
      greatest = std::max(greatest, triangle(m, perm));
  } while (std::next_permutation(perm.begin(), perm.end()));
  return greatest;
}

TEST(StepwiseSearch, ExhaustiveSearchFindsTheGreatestTriangle) {
  test_rng rng(4);
  for (int round = 0; round < 60; round++) {
    const int vs = 2 + random_below(rng, 5);
    const graph_ptr g = random_graph(rng, {.vs = vs,
                                           .extra_edges = random_below(rng, 6),
                                           .vlabels = 1,
                                           .elabels = 1 + round % 2});
    const adjmat_ptr m = refined(g.get());
    const std::vector<int> before = perm_of(m.get());
    const adjmat_ptr best = exhaustive_best(m);
    EXPECT_EQ(triangle(m.get(), perm_of(best.get())),
              greatest_triangle(m.get()))
        << round;
    EXPECT_EQ(perm_of(m.get()), before);
    for (int i = 0; i < vs; i++)
      EXPECT_EQ(best->iperm[best->perm[i]], i);
  }
}

TEST(StepwiseSearch, FirstOfEqualArrangementsStays) {
  const adjmat_ptr m = filled(complete_graph(4).get());
  set_perm(m.get(), {2, 0, 3, 1});
  EXPECT_EQ(perm_of(exhaustive_best(m).get()), (std::vector<int>{2, 0, 3, 1}));
}

TEST(StepwiseSearch, IsolatedRecordAtThePositionSkipsThePart) {
  // Positions 0..3 hold a ring in an order that can be improved.  Whether it is
  // depends on the record numbered 0: isolated, or on the ring.
  const std::vector<test_edge> ring = {{0, 2}, {2, 1}, {1, 3}, {3, 0}};
  std::vector<test_edge> shifted;
  for (const test_edge &edge : ring)
    shifted.push_back({edge.u + 1, edge.w + 1});
  const std::vector<int> labels(5, 0);
  const adjmat_ptr last = refined(make_graph(labels, ring).get());
  const adjmat_ptr first = refined(make_graph(labels, shifted).get());
  ASSERT_EQ(perm_of(first.get()), (std::vector<int>{1, 2, 3, 4, 0}));
  EXPECT_EQ(perm_of(exhaustive_best(first).get()), perm_of(first.get()));
  EXPECT_EQ(perm_of(exhaustive_best(last).get()),
            (std::vector<int>{0, 2, 3, 1, 4}));
}

TEST(StepwiseSearch, FixedVertexGoesAheadAndRefines) {
  const adjmat_ptr m = refined(ring_graph(4).get());
  const std::vector<int> before = perm_of(m.get());
  const std::vector<int> before_inverse(m->iperm, m->iperm + 4);
  std::vector<int> perm(4), iperm(4), saved(4);
  fix_vertex(m.get(), 2, perm.data(), iperm.data(), saved.data());
  EXPECT_EQ(m->parts, 3);
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{2, 1, 3, 0}));
  EXPECT_EQ(m->vertex[2].part, 0);
  EXPECT_EQ(m->vertex[3].part, 1);
  EXPECT_EQ(m->vertex[0].part, 2);
  EXPECT_EQ(perm, before);
  EXPECT_EQ(iperm, before_inverse);
  EXPECT_EQ(saved, (std::vector<int>{0, 0, 0, 0}));
}

TEST(StepwiseSearch, UnfixedPartitionReturnsAndTheOrderStays) {
  const adjmat_ptr m = refined(path_graph(5).get()); // 2 | 1 3 | 0 4
  std::vector<int> perm(5), iperm(5), saved(5);
  fix_vertex(m.get(), 3, perm.data(), iperm.data(), saved.data());
  EXPECT_EQ(m->parts, 5);
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{2, 3, 1, 4, 0}));
  unfix_vertex(m.get(), 3, perm.data(), iperm.data(), saved.data());
  EXPECT_EQ(m->parts, 3);
  EXPECT_EQ(std::vector<int>(m->part, m->part + 4),
            (std::vector<int>{0, 1, 3, 5}));
  EXPECT_EQ(m->vertex[1].part, 1);
  EXPECT_EQ(m->vertex[4].part, 2);
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{2, 3, 1, 4, 0}));
}

TEST(StepwiseSearchDeathTest, FixedVertexMustStandInItsPart) {
  const adjmat_ptr m = refined(path_graph(3).get()); // 1 | 0 2
  m->vertex[1].part = 1;
  std::vector<int> perm(3), iperm(3), saved(3);
  EXPECT_DEATH(fix_vertex(m.get(), 1, perm.data(), iperm.data(), saved.data()),
               "hit");
}

TEST(StepwiseSearch, OpenPartsAreFoundFromAPartOn) {
  const adjmat_ptr m = refined(path_graph(5).get()); // 2 | 1 3 | 0 4
  EXPECT_EQ(first_open_part(m.get(), 0), 1);
  EXPECT_EQ(first_open_part(m.get(), 1), 1);
  EXPECT_EQ(first_open_part(m.get(), 2), 2);
  EXPECT_EQ(first_open_part(m.get(), 3), -1);
}

TEST(StepwiseSearch, StabilizerSearchVisitsVerticesAsTheyComeToStand) {
  // Fixed vertices and leaves of a triangle, in order: 0 (012, 021), 2 (201,
  // 210), and again 0 (021, 012): backtracking has left 0 at position 2.
  const adjmat_ptr m = refined(complete_graph(3).get());
  const adjmat_ptr best = duplicate(m);
  const uint64_t calls = cl_stabilizer_calls();
  get_min_adjmat_by_stabilizer(m.get(), 0, 0, best.get());
  EXPECT_EQ(cl_stabilizer_calls() - calls, 3u + 3u * 2u);
  EXPECT_EQ(perm_of(best.get()), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(best->parts, 1);
  EXPECT_EQ(m->parts, 1);
}

// A path whose ends are told apart, arranged as given, and its discrete copy.
static adjmat_ptr discrete_path() {
  return refined(make_graph({0, 0, 1}, {{0, 1}, {1, 2}}).get());
}

TEST(StepwiseSearch, LeafReplacesAnyBestThatIsNotDiscrete) {
  const adjmat_ptr m = discrete_path(); // 1 0 2
  const adjmat_ptr best = duplicate(m);
  set_perm(m.get(), {0, 2, 1}); // a smaller triangle
  best->parts = 1;
  get_min_adjmat_by_stabilizer(m.get(), 2, 0, best.get());
  EXPECT_EQ(perm_of(best.get()), (std::vector<int>{0, 2, 1}));
  EXPECT_EQ(best->parts, 1);
}

TEST(StepwiseSearch, LeafReplacesADiscreteBestOnlyWhenGreater) {
  const adjmat_ptr m = discrete_path(); // 1 0 2
  const adjmat_ptr best = duplicate(m);
  set_perm(m.get(), {0, 2, 1});
  get_min_adjmat_by_stabilizer(m.get(), 2, 0, best.get());
  EXPECT_EQ(perm_of(best.get()), (std::vector<int>{1, 0, 2}));
  set_perm(m.get(), {1, 2, 0}); // an equal triangle
  get_min_adjmat_by_stabilizer(m.get(), 2, 0, best.get());
  EXPECT_EQ(perm_of(best.get()), (std::vector<int>{1, 0, 2}));
  set_perm(best.get(), {0, 2, 1});
  get_min_adjmat_by_stabilizer(m.get(), 2, 0, best.get());
  EXPECT_EQ(perm_of(best.get()), (std::vector<int>{1, 2, 0}));
}

TEST(StepwiseSearch, BranchBelowTheBestIsCut) {
  // Against a triangle of no ring order, greater in its first row, every
  // branch is smaller once its first part has two rows.
  const adjmat_ptr m = refined(ring_graph(5).get());
  const adjmat_ptr best = duplicate(m);
  best->rows[1][0] = 2;
  get_min_adjmat_by_stabilizer(m.get(), 0, 0, best.get());
  EXPECT_EQ(perm_of(best.get()), identity_of(5));
}

TEST(StepwiseSearchDeathTest, SearchBeginsAtTheFirstOpenPart) {
  const adjmat_ptr m = refined(path_graph(5).get()); // 2 | 1 3 | 0 4
  const adjmat_ptr best = duplicate(m);
  EXPECT_DEATH(get_min_adjmat_by_stabilizer(m.get(), 0, 0, best.get()),
               "m->part\\[part \\+ 1\\] - m->part\\[part\\] > 1");
  EXPECT_DEATH(get_min_adjmat_by_stabilizer(m.get(), 2, 0, best.get()),
               "pindex == part");
}

TEST(StepwiseCanonical, AdjmatEndsInOrderWithItsInverse) {
  const graph_ptr g = ring_graph(6);
  const adjmat_ptr m = filled(g.get());
  cl_canonicalize_adjmat(m.get());
  const graph_ptr form(graph_copy(g.get()));
  cl_canonicalize_graph(form.get());
  for (int i = 0; i < 6; i++) {
    EXPECT_EQ(m->iperm[m->perm[i]], i);
    EXPECT_EQ(m->perm[i], form->vid[i]);
  }
}

TEST(StepwiseCanonical, ThresholdChoosesTheSearch) {
  const auto steps = [](int threshold) {
    const int before = cl_get_stabilizer_threshold();
    cl_set_stabilizer_threshold(threshold);
    const uint64_t calls = cl_stabilizer_calls();
    const graph_ptr g = ring_graph(4);
    const uint32_t key = cl_canonicalize_graph(g.get());
    EXPECT_EQ(key, graph_key(g.get()));
    cl_set_stabilizer_threshold(before);
    return cl_stabilizer_calls() - calls;
  };
  EXPECT_EQ(steps(5), 0u);
  // Four vertices are set apart; each leaves its two neighbours alike.
  EXPECT_EQ(steps(4), 4u + 4u * 2u);
}

TEST(StepwiseSearch, LeavesBeyondTheLimitEndTheSearch) {
  // 3! leaves of the stabilizer search, and 4! arrangements of one part.
  const auto passes = [](const graph_ptr &g, int threshold, uint64_t limit) {
    const int before = cl_get_stabilizer_threshold();
    cl_set_stabilizer_threshold(threshold);
    set_leaf_limit(limit);
    bool passed = false;
    try {
      cl_canonicalize_graph(g.get());
    } catch (const leaf_limit_passed &) {
      passed = true;
    }
    set_leaf_limit(UINT64_MAX);
    cl_set_stabilizer_threshold(before);
    return passed;
  };
  EXPECT_TRUE(passes(complete_graph(3), 1, 5));
  EXPECT_FALSE(passes(complete_graph(3), 1, 6));
  EXPECT_TRUE(passes(complete_graph(4), 5, 23));
  EXPECT_FALSE(passes(complete_graph(4), 5, 24));
}

} // namespace kestro::stepwise
