// The lengths of cycles against a walk along every path.  Seeds are fixed.

#include "cl/cycle_core.h"

#include <gtest/gtest.h>

#include "support/graph_families.h"

namespace kestro {

namespace {

constexpr int graphs_per_test = 1000;

// Adds the lengths of cycles that go on from a path, whose first vertex is
// their lowest.
void add_lengths(const graph *g, std::vector<int> *path,
                 cycle_lengths *lengths) {
  const int at = path->back();
  for (int j = g->v[at]; j < g->v[at + 1]; j++) {
    const int w = g->e[j];
    if (w == path->front() && path->size() > 2)
      *lengths |= length_bit(static_cast<int>(path->size()));
    if (w < path->front() ||
        std::find(path->begin(), path->end(), w) != path->end())
      continue;
    path->push_back(w);
    add_lengths(g, path, lengths);
    path->pop_back();
  }
}

cycle_lengths naive_lengths(const graph *g) {
  cycle_lengths lengths = 0;
  for (int u = 0; u < g->vs; u++) {
    std::vector<int> path = {u};
    add_lengths(g, &path, &lengths);
  }
  return lengths;
}

class CycleLengths : public testing::TestWithParam<int> {};

} // namespace

TEST_P(CycleLengths, AreThoseOfAllPaths) {
  int many = 0;    // graphs of two cycles and more whose lengths are all known
  int unknown = 0; // graphs of too many
  cycle_core_finder cores;
  for (int i = 0; i < graphs_per_test && !HasFailure(); i++) {
    const auto seed = static_cast<unsigned>(GetParam() * graphs_per_test + i);
    test_rng rng(seed);
    const graph_ptr g =
        random_graph(rng, {1 + random_below(rng, 16), random_below(rng, 9), 1,
                           1, random_below(rng, 3) != 0});
    const cycle_core core = cores.find(g.get());
    const cycle_lengths naive = naive_lengths(g.get());
    EXPECT_EQ(core.lengths & ~naive, 0U) << graph_words(g.get());
    if (core.has_all)
      EXPECT_EQ(core.lengths, naive) << graph_words(g.get());
    else
      EXPECT_GT(core.cycles, cycle_lengths_finder::most_cycles);
    many += core.has_all && core.cycles > 1;
    unknown += !core.has_all;
  }
  EXPECT_GT(many, graphs_per_test / 5);
  EXPECT_GT(unknown, 10);
}

INSTANTIATE_TEST_SUITE_P(Seeds, CycleLengths, testing::Range(0, 4));

} // namespace kestro
