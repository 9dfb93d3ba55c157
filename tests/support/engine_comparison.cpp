// Both engines on one graph.
//
// The reference decides; it is given up where symmetry makes it walk through
// more arrangements than the limit.

#include "support/engine_comparison.h"

#include "reference/cl/canonical.h"
#include "reference/cl/canonical_calls.h"
#include "reference/cl/canonical_search.h"
#include "reference/graph/graph.h"

namespace kestro {

int threshold_of_seed(uint64_t seed) {
  static constexpr int thresholds[] = {-1, 0, 1, 2, 3, 5, 9};
  return thresholds[seed % 7];
}

static graph_ptr canonical(const graph *g) {
  graph_ptr form(graph_copy(g));
  cl_canonicalize_graph(form.get());
  return form;
}

// Null when the reference passes its limit.
static graph_ptr stepwise_canonical(const graph *g, uint64_t leaf_limit) {
  graph_ptr form(graph_copy(g));
  stepwise::set_leaf_limit(leaf_limit);
  try {
    stepwise::cl_canonicalize_graph(form.get());
  } catch (const stepwise::leaf_limit_passed &) {
    form.reset();
  }
  stepwise::set_leaf_limit(UINT64_MAX);
  return form;
}

// Whether a and b, two orders of g's vertices, show the same graph.
static bool are_images(const graph *g, const int *a, const int *b) {
  std::vector<int> map(static_cast<size_t>(g->vs), -1);
  for (int i = 0; i < g->vs; i++)
    map[static_cast<size_t>(a[i])] = b[i];
  std::vector<int> sorted = map;
  std::sort(sorted.begin(), sorted.end());
  return sorted == identity_of(g->vs) && is_mapping(g, g, map);
}

static bool copies_come_to(const graph *form, const graph *g) {
  test_rng rng(1);
  for (int copy = 0; copy < 5; copy++) {
    const graph_ptr other = relabelled(g, random_permutation(rng, g->vs));
    if (!same_structure(canonical(other.get()).get(), form))
      return false;
  }
  return true;
}

std::string engine_difference(const graph *g, int threshold,
                              uint64_t leaf_limit, comparison_counts *counts) {
  cl_set_stabilizer_threshold(threshold);
  stepwise::cl_set_stabilizer_threshold(threshold);
  const graph_ptr form = canonical(g);
  const bool invariant = cl_form_is_invariant();
  if (invariant && !copies_come_to(form.get(), g))
    return "a copy has another form though the form is invariant";
  const graph_ptr expected = stepwise_canonical(g, leaf_limit);
  if (!expected) {
    counts->skipped++;
    return "";
  }
  counts->compared++;
  counts->variant += !invariant;
  if (!same_structure(form.get(), expected.get()))
    return "other arrays";
  if (form->key != expected->key)
    return "another key";
  if (!are_images(g, expected->vid, form->vid))
    return "the orders differ by no automorphism";
  counts->other_order +=
      !std::equal(form->vid, form->vid + g->vs, expected->vid);
  return "";
}

std::string engine_difference_of(const drawn_graph &drawn, uint64_t seed,
                                 int threshold, uint64_t leaf_limit,
                                 comparison_counts *counts) {
  const auto difference = [&](const graph *g) {
    return engine_difference(g, threshold, leaf_limit, counts);
  };
  if (difference(drawn.g.get()).empty())
    return "";
  const graph_ptr smallest =
      shrunk_graph(graph_ptr(graph_copy(drawn.g.get())),
                   [&](const graph *g) { return !difference(g).empty(); });
  return "seed " + std::to_string(seed) + ", " + drawn.family + ", threshold " +
         std::to_string(threshold) + ": " + difference(smallest.get()) +
         " in " + graph_words(smallest.get());
}

} // namespace kestro
