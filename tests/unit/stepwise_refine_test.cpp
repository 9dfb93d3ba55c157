#include "reference/cl/refine.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "support/graphs.h"

namespace kestro::stepwise {

static adjmat_ptr filled(const graph *g) {
  adjmat_ptr m(cl_new_adjmat(g->vs));
  cl_graph_to_adjmat(g, m.get());
  return m;
}

static std::vector<int> perm_of(const adjmat *m) {
  return std::vector<int>(m->perm, m->perm + m->vs);
}

static std::vector<int> starts_of(const adjmat *m) {
  return std::vector<int>(m->part, m->part + m->parts + 1);
}

TEST(StepwiseRefine, EdgesCompareByLabelThenPart) {
  cl_vertex first = {};
  cl_vertex second = {};
  second.part = 3;
  const cl_edge low = {1, &second};
  const cl_edge high = {3, &first};
  const cl_edge same_label = {1, &first};
  EXPECT_EQ(compare_edges(&low, &high), -2);
  EXPECT_EQ(compare_edges(&high, &low), 2);
  EXPECT_EQ(compare_edges(&low, &same_label), 3);
  EXPECT_EQ(compare_edges(&low, &low), 0);
}

TEST(StepwiseRefine, VerticesCompareByPartDegreeLabelAndLists) {
  cl_vertex near = {};
  cl_vertex far = {};
  far.part = 2;
  cl_edge list_a[] = {{1, &near}, {1, &near}};
  cl_edge list_b[] = {{1, &near}, {1, &far}};
  cl_vertex a = {};
  a.part = 1;
  a.degree = 2;
  a.label = 5;
  a.adj = list_a;
  cl_vertex b = a;
  b.adj = list_b;
  EXPECT_EQ(compare_vertices(&a, &b), -2);
  EXPECT_EQ(compare_vertices(&b, &a), 2);
  EXPECT_EQ(compare_vertices(&a, &a), 0);
  b.label = 4;
  EXPECT_EQ(compare_vertices(&a, &b), 1);
  a.degree = 0; // fewer neighbours come later, whatever the label
  b.label = 9;
  EXPECT_EQ(compare_vertices(&a, &b), 2);
  a.part = 0;
  EXPECT_EQ(compare_vertices(&a, &b), -1);
}

// The order a stable sort must give: an item goes behind all smaller ones and
// all equal ones that came before it.
template <class T, class Compare>
static std::vector<T> slowly_sorted(const std::vector<T> &items,
                                    Compare compare) {
  std::vector<T> sorted(items.size());
  for (size_t i = 0; i < items.size(); i++) {
    size_t rank = 0;
    for (size_t j = 0; j < items.size(); j++) {
      const int d = compare(items[j], items[i]);
      rank += d < 0 || (d == 0 && j < i);
    }
    sorted[rank] = items[i];
  }
  return sorted;
}

static void expect_sorted_like_slow_sort(adjmat *m) {
  std::vector<std::vector<cl_vertex *>> neighbours;
  for (int i = 0; i < m->vs; i++) {
    const cl_vertex &v = m->vertex[i];
    std::vector<cl_edge> list(v.adj, v.adj + v.degree);
    list = slowly_sorted(list, [](const cl_edge &x, const cl_edge &y) {
      return compare_edges(&x, &y);
    });
    neighbours.emplace_back();
    for (const cl_edge &edge : list)
      neighbours.back().push_back(edge.v);
  }
  const std::vector<cl_vertex *> before(m->sorted, m->sorted + m->vs);
  cl_sort_vertices(m);
  // The lists are sorted by now, as the comparison of vertices needs them.
  const auto expected = slowly_sorted(before, compare_vertices);
  for (int i = 0; i < m->vs; i++) {
    const auto at = static_cast<size_t>(i);
    EXPECT_EQ(m->sorted[i], expected[at]);
    EXPECT_EQ(m->perm[i], m->sorted[i]->row);
    EXPECT_EQ(m->iperm[m->perm[i]], i);
    for (int k = 0; k < m->vertex[i].degree; k++)
      EXPECT_EQ(m->vertex[i].adj[k].v, neighbours[at][static_cast<size_t>(k)]);
  }
}

TEST(StepwiseRefine, SortsLikeASlowStableSort) {
  test_rng rng(2);
  for (const int vs : {1, 2, 5, 16, 17, 33, 70}) {
    for (int round = 0; round < 5; round++) {
      const graph_ptr g =
          random_graph(rng, {.vs = vs, .extra_edges = vs * vs / 3});
      const adjmat_ptr m = filled(g.get());
      for (int again = 0; again < 3; again++) {
        for (int i = 0; i < vs; i++)
          m->vertex[i].part = random_below(rng, 3);
        expect_sorted_like_slow_sort(m.get());
      }
    }
  }
}

TEST(StepwiseRefine, EqualVerticesKeepTheirOrder) {
  const graph_ptr g = complete_graph(4);
  const adjmat_ptr m = filled(g.get());
  std::swap(m->sorted[0], m->sorted[3]);
  cl_sort_vertices(m.get());
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{3, 1, 2, 0}));
}

TEST(StepwiseRefine, HigherDegreesComeFirst) {
  const adjmat_ptr m = filled(path_graph(3).get());
  cl_refine(m.get());
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{1, 0, 2}));
  EXPECT_EQ(starts_of(m.get()), (std::vector<int>{0, 1, 3}));
  EXPECT_EQ(m->new_parts, 2);
  EXPECT_EQ(m->vertex[0].part, 1);
  EXPECT_EQ(m->vertex[1].part, 0);
}

TEST(StepwiseRefine, PassesRepeatUntilNothingSplits) {
  // The first pass tells inner vertices from ends, the second the middle.
  const adjmat_ptr m = filled(path_graph(5).get());
  cl_refine(m.get());
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{2, 1, 3, 0, 4}));
  EXPECT_EQ(starts_of(m.get()), (std::vector<int>{0, 1, 3, 5}));
}

TEST(StepwiseRefine, RingsStayWhole) {
  const adjmat_ptr m = filled(ring_graph(5).get());
  cl_refine(m.get());
  EXPECT_EQ(starts_of(m.get()), (std::vector<int>{0, 5}));
}

TEST(StepwiseRefine, EdgeLabelsSplit) {
  const graph_ptr g =
      make_graph({0, 0, 0, 0}, {{0, 1, 1}, {1, 2, 0}, {2, 3, 0}, {3, 0, 0}});
  const adjmat_ptr m = filled(g.get());
  cl_refine(m.get());
  EXPECT_EQ(perm_of(m.get()), (std::vector<int>{2, 3, 0, 1}));
  EXPECT_EQ(starts_of(m.get()), (std::vector<int>{0, 2, 4}));
}

TEST(StepwiseRefine, WithoutPartsNothingHappens) {
  const adjmat_ptr m = filled(path_graph(3).get());
  m->parts = 0;
  cl_refine(m.get());
  EXPECT_EQ(m->parts, 0);
  EXPECT_EQ(perm_of(m.get()), identity_of(3));
}

TEST(StepwiseRefine, WithoutVerticesThereAreNoParts) {
  const graph_ptr g = make_graph({}, {});
  const adjmat_ptr m = filled(g.get());
  cl_refine(m.get());
  EXPECT_EQ(m->parts, 0);
}

// Refinement by whole signatures, numbered in order, until none is new.
static std::vector<int> slowly_refined(const graph *g) {
  using signature = std::tuple<int, int, int, std::vector<std::pair<int, int>>>;
  std::vector<int> colours(static_cast<size_t>(g->vs), 0);
  for (size_t before = 0;;) {
    std::map<signature, int> numbers;
    std::vector<signature> signatures;
    for (int i = 0; i < g->vs; i++) {
      std::vector<std::pair<int, int>> seen;
      for (int j = g->v[i]; j < g->v[i + 1]; j++)
        seen.emplace_back(g->elabel[j], colours[static_cast<size_t>(g->e[j])]);
      std::sort(seen.begin(), seen.end());
      signatures.emplace_back(colours[static_cast<size_t>(i)],
                              g->v[i] - g->v[i + 1], g->vlabel[i], seen);
      numbers[signatures.back()] = 0;
    }
    int next = 0;
    for (auto &entry : numbers)
      entry.second = next++;
    for (size_t i = 0; i < colours.size(); i++)
      colours[i] = numbers[signatures[i]];
    if (numbers.size() == before)
      return colours;
    before = numbers.size();
  }
}

TEST(StepwiseRefine, PartsAreThoseOfWholeSignatures) {
  test_rng rng(3);
  for (int round = 0; round < 300; round++) {
    const int vs = 1 + random_below(rng, 12);
    const graph_ptr g = random_graph(rng, {.vs = vs,
                                           .extra_edges = random_below(rng, 6),
                                           .vlabels = 1 + round % 2,
                                           .elabels = 1 + round % 3,
                                           .connected = round % 5 != 0});
    const adjmat_ptr m = filled(g.get());
    cl_refine(m.get());
    const std::vector<int> expected = slowly_refined(g.get());
    for (int i = 0; i < vs; i++) {
      ASSERT_EQ(m->vertex[i].part, expected[static_cast<size_t>(i)]) << round;
      const int part = m->vertex[i].part;
      ASSERT_LE(m->part[part], m->iperm[i]);
      ASSERT_LT(m->iperm[i], m->part[part + 1]);
      ASSERT_EQ(m->sorted[m->iperm[i]], &m->vertex[i]);
    }
    ASSERT_EQ(m->part[m->parts], vs);
  }
}

} // namespace kestro::stepwise
