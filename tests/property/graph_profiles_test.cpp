// Profiles and cores against the naive matcher: wherever a mapping sends a
// vertex, the image's profile covers the vertex's, and where there is a
// mapping, the core of the graph may hold that of the pattern.  Seeds are
// fixed.

#include "cl/graph_profiles.h"

#include <gtest/gtest.h>

#include "support/graph_families.h"

namespace kestro {

namespace {

constexpr int pairs_per_test = 2000;

struct profile_counts {
  int mapped = 0;   // pairs of a vertex and an image of it
  int excluded = 0; // pairs without a mapping that profiles tell apart
  int mappings = 0;
  int cycles_mapped = 0;  // pairs with a mapping, the pattern with cycles
  int cores_excluded = 0; // pairs that cores tell apart
};

// A random pattern and a random graph, or the pattern with vertices and edges
// added, so that it occurs.
void draw_pair(test_rng &rng, graph_ptr *pattern, graph_ptr *target) {
  const int labels = 1 + random_below(rng, 4);
  const int elabels = 1 + random_below(rng, 3);
  *pattern = random_graph(rng, {1 + random_below(rng, 5), random_below(rng, 4),
                                labels, elabels, true});
  const graph_ptr drawn =
      random_graph(rng, {1 + random_below(rng, 8), random_below(rng, 16),
                         labels, elabels, random_below(rng, 2) != 0});
  if (random_below(rng, 2) == 0) {
    *target = relabelled(drawn.get(), identity_of(drawn->vs));
    return;
  }
  std::vector<int> vlabels = vlabels_of(pattern->get());
  std::vector<test_edge> edges = edges_of(pattern->get());
  const int shift = (*pattern)->vs;
  for (const int label : vlabels_of(drawn.get()))
    if (vlabels.size() < 9)
      vlabels.push_back(label);
  const int vs = static_cast<int>(vlabels.size());
  for (int u = 0; u < shift; u++)
    for (int w = shift; w < vs; w++)
      if (random_below(rng, 3) == 0)
        edges.push_back({u, w, random_below(rng, elabels)});
  const graph_ptr grown = make_graph(vlabels, edges);
  *target = relabelled(grown.get(), random_permutation(rng, vs));
}

void check_pair(const graph *pattern, const graph *target,
                profile_counts *counts) {
  const auto maps = naive_maps(pattern, target);
  counts->mappings += static_cast<int>(maps.size());
  cycle_core_finder cores;
  const cycle_core part = cores.find(pattern);
  const bool may_hold = cores.find(target).may_hold(part);
  ASSERT_TRUE(may_hold || maps.empty())
      << graph_words(pattern) << "\nin " << graph_words(target);
  counts->cycles_mapped += part.cycles > 0 && !maps.empty();
  counts->cores_excluded += !may_hold;
  for (int u = 0; u < pattern->vs; u++) {
    const vertex_profile profile = profile_of(pattern, u);
    for (int w = 0; w < target->vs; w++) {
      const bool is_image =
          std::any_of(maps.begin(), maps.end(), [&](const auto &map) {
            return map[static_cast<size_t>(u)] == w;
          });
      const bool covers = profile_of(target, w).covers(profile);
      ASSERT_TRUE(covers || !is_image)
          << u << " to " << w << '\n'
          << graph_words(pattern) << "\nin " << graph_words(target);
      counts->mapped += is_image;
      counts->excluded += !covers;
    }
  }
}

class GraphProfiles : public testing::TestWithParam<int> {};

} // namespace

TEST_P(GraphProfiles, OfImagesCoverThoseOfTheirVertices) {
  profile_counts counts;
  for (int i = 0; i < pairs_per_test && !HasFailure(); i++) {
    const auto seed = static_cast<unsigned>(GetParam() * pairs_per_test + i);
    SCOPED_TRACE("seed " + std::to_string(seed));
    test_rng rng(seed);
    graph_ptr pattern;
    graph_ptr target;
    draw_pair(rng, &pattern, &target);
    check_pair(pattern.get(), target.get(), &counts);
  }
  EXPECT_GT(counts.mapped, 5000);
  EXPECT_GT(counts.excluded, 5000);
  EXPECT_GT(counts.mappings, 2000);
  EXPECT_GT(counts.cycles_mapped, 200);
  EXPECT_GT(counts.cores_excluded, 100);
}

INSTANTIATE_TEST_SUITE_P(Seeds, GraphProfiles, testing::Range(0, 4));

} // namespace kestro
