// Refinement that looks at changes only, and that of small graphs, against
// refinement by whole passes: the same cells in the same order, and the same
// vertices in the same order in each.  Seeds are fixed.

#include "cl/colouring.h"

#include <algorithm>
#include <climits>

#include <gtest/gtest.h>

#include "support/graph_families.h"

namespace kestro {
namespace {

using ints = std::vector<int>;
using edge_list = std::vector<test_edge>;

edge_list grid_edges(int rows, int columns, bool wrapped) {
  edge_list edges;
  for (int r = 0; r < rows; r++)
    for (int c = 0; c < columns; c++) {
      if (c + 1 < columns)
        edges.push_back({r * columns + c, r * columns + c + 1});
      else if (wrapped && columns > 2)
        edges.push_back({r * columns, r * columns + c});
      if (r + 1 < rows)
        edges.push_back({r * columns + c, (r + 1) * columns + c});
      else if (wrapped && rows > 2)
        edges.push_back({c, r * columns + c});
    }
  return edges;
}

edge_list cube_edges(int dimensions) {
  edge_list edges;
  for (int u = 0; u < 1 << dimensions; u++)
    for (int bit = 0; bit < dimensions; bit++)
      if (const int w = u | 1 << bit; w != u)
        edges.push_back({u, w});
  return edges;
}

// Steps to both sides; the larger ones less than half of n.
edge_list circulant_edges(int n, const ints &steps) {
  edge_list edges;
  for (int u = 0; u < n; u++)
    for (const int step : steps)
      edges.push_back({u, (u + step) % n});
  return edges;
}

edge_list random_tree_edges(test_rng &rng, int n, int reach) {
  edge_list edges;
  for (int u = 1; u < n; u++)
    edges.push_back({u - 1 - random_below(rng, std::min(u, reach)), u});
  return edges;
}

edge_list balanced_tree_edges(int n, int children) {
  edge_list edges;
  for (int u = 1; u < n; u++)
    edges.push_back({(u - 1) / children, u});
  return edges;
}

edge_list edges_of_owned(const graph_ptr &g) { return edges_of(g.get()); }

// Paths and rings of 3, 4, 5 ... side by side: many alike, none connected.
edge_list many_parts(int n) {
  edge_list edges;
  for (int u = 0, length = 3; u + length <= n; u += length, length++)
    for (int i = 0; i < length; i++)
      if (i + 1 < length)
        edges.push_back({u + i, u + i + 1});
      else if (length % 2 == 0)
        edges.push_back({u, u + i});
  return edges;
}

edge_list draw_edges(test_rng &rng, int *vs) {
  const int n = 3 + random_below(rng, 120);
  *vs = n;
  switch (random_below(rng, 12)) {
  case 0:
    return edges_of_owned(path_graph(n));
  case 1:
    return edges_of_owned(ring_graph(n));
  case 2:
    return edges_of_owned(star_graph(n));
  case 3:
    return random_tree_edges(rng, n, n);
  case 4:
    return random_tree_edges(rng, n, 1 + random_below(rng, 4));
  case 5:
    return balanced_tree_edges(n, 2 + random_below(rng, 3));
  case 6:
    return n < 8 ? cube_edges(0)
                 : circulant_edges(n, {1, 2 + random_below(rng, n / 2 - 2)});
  case 7: {
    const int rows = 2 + random_below(rng, 10);
    const int columns = 2 + random_below(rng, 10);
    *vs = rows * columns;
    return grid_edges(rows, columns, random_below(rng, 2) != 0);
  }
  case 8: {
    const int dimensions = 1 + random_below(rng, 6);
    *vs = 1 << dimensions;
    return cube_edges(dimensions);
  }
  case 9:
    return many_parts(n);
  case 10:
    return edges_of_owned(
        random_graph(rng, {n, random_below(rng, 2 * n), 1, 1, true}));
  default: { // a ring with a tail
    edge_list edges = edges_of_owned(ring_graph(n));
    *vs = n + random_below(rng, n);
    for (int u = n; u < *vs; u++)
      edges.push_back({u - 1, u});
    return edges;
  }
  }
}

// Labels alike, all but for a few, or of some kinds at random.
ints draw_labels(test_rng &rng, size_t n) {
  ints labels(n, 0);
  const int way = random_below(rng, 4);
  if (way == 0)
    for (int &label : labels)
      label = random_below(rng, 3);
  if (way == 1 && n > 0)
    for (int i = random_below(rng, 3); i >= 0; i--)
      labels[static_cast<size_t>(random_below(rng, static_cast<int>(n)))] = 1;
  return labels;
}

graph_ptr draw_large_graph(test_rng &rng) {
  int vs = 0;
  edge_list edges = draw_edges(rng, &vs);
  const ints elabels = draw_labels(rng, edges.size());
  for (size_t i = 0; i < edges.size(); i++)
    edges[i].label = elabels[i];
  const graph_ptr g =
      make_graph(draw_labels(rng, static_cast<size_t>(vs)), edges);
  return random_below(rng, 3) == 0
             ? relabelled(g.get(), identity_of(vs))
             : relabelled(g.get(), random_permutation(rng, vs));
}

// A graph refined in both ways.
struct both_ways {
  colouring passes, other;
  refinement_work work_of_passes, work_of_other;

  static both_ways with_changes() {
    both_ways both;
    both.work_of_other.large = 0;
    return both;
  }
  static both_ways with_small_graphs() {
    both_ways both;
    both.work_of_other.large = INT_MAX;
    return both;
  }

  void expect_equal() const {
    ASSERT_EQ(passes.cells, other.cells);
    ASSERT_TRUE(passes.order == other.order);
    ASSERT_TRUE(passes.colour == other.colour);
    for (size_t s = 0; s < passes.order.size();
         s = static_cast<size_t>(passes.cell_end[s]))
      ASSERT_EQ(passes.cell_end[s], other.cell_end[s]);
  }

private:
  both_ways() {
    work_of_passes.large = INT_MAX;
    work_of_passes.small = 0;
  }
};

struct walk_counts {
  int steps = 0;
  int split_further = 0; // steps that more than set a vertex apart
  int largest = 0;       // graph
};

int draw_open_vertex(test_rng &rng, const colouring &c) {
  xvector<int> open;
  for (const int v : c.order) {
    const int first = c.colour[static_cast<size_t>(v)];
    if (c.cell_end[static_cast<size_t>(first)] - first > 1)
      open.push_back(v);
  }
  return open[static_cast<size_t>(
      random_below(rng, static_cast<int>(open.size())))];
}

// Sets vertices apart, of any open cell, until all are, and returns to an
// earlier partition at times, with the order as it is then.
void walk(test_rng &rng, const graph *g, both_ways *both, walk_counts *counts) {
  colouring_init(&both->passes, g, &both->work_of_passes);
  colouring_init(&both->other, g, &both->work_of_other);
  ASSERT_NO_FATAL_FAILURE(both->expect_equal());
  counts->largest = std::max(counts->largest, g->vs);
  std::vector<std::pair<colouring, colouring>> before;
  for (int step = 0; both->passes.cells < g->vs && step < 40; step++) {
    before.emplace_back(both->passes, both->other);
    const int old_cells = both->passes.cells;
    const int v = draw_open_vertex(rng, both->passes);
    colouring_individualise(&both->passes, g, v, &both->work_of_passes);
    colouring_individualise(&both->other, g, v, &both->work_of_other);
    ASSERT_NO_FATAL_FAILURE(both->expect_equal());
    counts->steps++;
    counts->split_further += both->passes.cells > old_cells + 1;
    if (random_below(rng, 3) == 0) {
      before.resize(1 + static_cast<size_t>(random_below(
                            rng, static_cast<int>(before.size()))));
      colouring_coarsen(&both->passes, &before.back().first);
      colouring_coarsen(&both->other, &before.back().second);
      before.pop_back();
    }
  }
}

class ColouringProperty : public testing::TestWithParam<int> {};

} // namespace

// Walks over many graphs of all sizes with the same memory.
static void walk_many(int from_seed, both_ways both) {
  constexpr int graphs = 1500;
  walk_counts counts;
  for (int i = 0; i < graphs && !testing::Test::HasFailure(); i++) {
    const auto seed = static_cast<unsigned>(from_seed * graphs + i);
    test_rng rng(seed);
    const graph_ptr g =
        i % 2 == 0 ? draw_large_graph(rng) : std::move(draw_graph(seed).g);
    SCOPED_TRACE("seed " + std::to_string(seed) + '\n' + graph_words(g.get()));
    walk(rng, g.get(), &both, &counts);
  }
  EXPECT_GT(counts.steps, 5000);
  EXPECT_GT(counts.split_further, 2000);
  EXPECT_GT(counts.largest, 100);
}

TEST_P(ColouringProperty, ChangesGiveWhatWholePassesGive) {
  walk_many(GetParam(), both_ways::with_changes());
}

TEST_P(ColouringProperty, SmallGraphsComeOutAsByWholePasses) {
  walk_many(GetParam(), both_ways::with_small_graphs());
}

INSTANTIATE_TEST_SUITE_P(Seeds, ColouringProperty, testing::Range(0, 4));

} // namespace kestro
