// The search with domains against the plain walk and the slow searches of the
// reference, on graphs in which many vertices look alike.  Seeds are fixed.

#include "cl/domain_search.h"

#include <climits>

#include <gtest/gtest.h>

#include "cl/search_plan.h"
#include "graph/connectivity.h"
#include "reference/cl/subgraph_isomorphism.h"
#include "support/graph_families.h"
#include "support/records.h"

namespace kestro {

namespace {

using ints = std::vector<int>;

constexpr int pairs_per_test = 1000;
constexpr int test_count = 8;

// Two graphs beside each other, the vertices in random order.
graph_ptr beside(test_rng &rng, const graph *a, const graph *b) {
  ints labels = vlabels_of(a);
  std::vector<test_edge> edges = edges_of(a);
  for (const int label : vlabels_of(b))
    labels.push_back(label);
  for (const test_edge &edge : edges_of(b))
    edges.push_back({edge.u + a->vs, edge.w + a->vs, edge.label});
  const graph_ptr both = make_graph(labels, edges);
  return relabelled(both.get(), random_permutation(rng, both->vs));
}

// g with an edge more or less, or g itself.
graph_ptr disturbed(test_rng &rng, graph_ptr g) {
  std::vector<test_edge> edges = edges_of(g.get());
  const int u = random_below(rng, g->vs);
  const int w = random_below(rng, g->vs);
  switch (random_below(rng, 3)) {
  case 0:
    return g;
  case 1:
    edges.erase(edges.begin() + random_below(rng, int_count(edges.size())));
    break;
  default:
    if (u == w || graph_has_edge(g.get(), u, w))
      return g;
    edges.push_back({u, w, edges[0].label});
  }
  return make_graph(vlabels_of(g.get()), edges);
}

// A connected part of g with that many edges or more, in random order; a path
// where g is not connected.
graph_ptr part_of(test_rng &rng, graph_ptr g, int edges) {
  for (int tries = 0; g->es > 2 * edges && tries < 1000; tries++) {
    const auto i = static_cast<size_t>(random_below(rng, g->es / 2));
    graph_ptr less = without_edge(g.get(), i);
    for (int u = less->vs; u-- > 0;)
      if (less->v[u] == less->v[u + 1])
        less = without_vertex(less.get(), u);
    if (is_connected(less.get()))
      g = std::move(less);
  }
  if (!is_connected(g.get()))
    return path_graph(4);
  return relabelled(g.get(), random_permutation(rng, g->vs));
}

struct search_case {
  graph_ptr pattern; // connected
  graph_ptr target;
};

search_case case_of_seed(unsigned seed) {
  test_rng rng(seed);
  graph_ptr target = draw_graph(seed).g;
  const graph_ptr origin = random_below(rng, 3) == 0
                               ? draw_graph(seed + 1000000).g
                               : graph_ptr(graph_copy(target.get()));
  graph_ptr pattern = part_of(rng, graph_ptr(graph_copy(origin.get())),
                              1 + random_below(rng, 7));
  target = disturbed(rng, std::move(target));
  if (random_below(rng, 3) == 0)
    target = beside(rng, target.get(),
                    disturbed(rng, draw_graph(seed + 2000000).g).get());
  return {std::move(pattern), std::move(target)};
}

// What a plan finds with that patience: the images, empty for none.
ints found(const search_plan &plan, const search_case &c, int patience) {
  search_memory memory;
  memory.patience = patience;
  ints image(static_cast<size_t>(c.pattern->vs), -7);
  for (int round = 0; round < 2; round++) // the memory can be used again
    if (!plan.find(c.target.get(), &memory, image.data()))
      return {};
  return image;
}

// The first mappings of a walk with that patience.
std::vector<ints> walked(const search_plan &plan, const search_case &c,
                         twin_images twins, int patience) {
  constexpr size_t most = 200;
  std::vector<ints> maps;
  ints image(static_cast<size_t>(c.pattern->vs), -7);
  search_memory memory;
  memory.patience = patience;
  const graph *t = c.target.get();
  for (bool more = plan.first(t, twins, &memory, image.data());
       more && maps.size() < most;
       more = plan.next(t, twins, &memory, image.data()))
    maps.push_back(image);
  return maps;
}

// An order in which each vertex but the first has a neighbour before it.
ints random_order(test_rng &rng, const graph *g) {
  ints order = {random_below(rng, g->vs)};
  while (int_count(order.size()) < g->vs) {
    const int u = random_below(rng, g->vs);
    const bool reached = std::any_of(order.begin(), order.end(), [&](int w) {
      return graph_has_edge(g, u, w);
    });
    if (reached && std::find(order.begin(), order.end(), u) == order.end())
      order.push_back(u);
  }
  return order;
}

std::string difference(const search_case &c, unsigned seed) {
  test_rng rng(seed);
  const ints order = random_order(rng, c.pattern.get());
  const search_plan plan(c.pattern.get(), order.data());
  const ints hard = found(plan, c, 0);
  if (c.pattern->vs > c.target->vs)
    return hard.empty() ? "" : "found in fewer vertices";
  ints map(static_cast<size_t>(c.pattern->vs), -1);
  const int is_there = graph_find_isomorphism_by_order(
      c.pattern.get(), c.target.get(), map.data(), order.data());
  if (hard.empty() == (is_there == 1))
    return is_there ? "not found" : "found where there is none";
  if (is_there && hard != map)
    return "not the reference's mapping";
  for (const int patience : {1, 3, INT_MAX})
    if (found(plan, c, patience) != hard)
      return "not the mapping of patience " + std::to_string(patience);
  for (const twin_images twins : {twin_images::any, twin_images::ascending})
    for (const int patience : {0, 2})
      if (walked(plan, c, twins, patience) != walked(plan, c, twins, INT_MAX))
        return "other mappings follow";
  return "";
}

std::string shrunk(search_case c, unsigned seed) {
  c.target = shrunk_graph(std::move(c.target), [&](const graph *t) {
    return !difference({graph_ptr(graph_copy(c.pattern.get())),
                        graph_ptr(graph_copy(t))},
                       seed)
                .empty();
  });
  return "seed " + std::to_string(seed) + ": " + difference(c, seed) + '\n' +
         graph_words(c.pattern.get()) + "\nin " + graph_words(c.target.get());
}

bool does_occur(const search_case &c) {
  ints order(static_cast<size_t>(c.pattern->vs));
  graph_bfs_order(c.pattern.get(), order.data());
  return !found(search_plan(c.pattern.get(), order.data()), c, 0).empty();
}

class DomainSearches : public testing::TestWithParam<int> {};

} // namespace

TEST_P(DomainSearches, FindWhatThePlainWalkFinds) {
  int occurring = 0;
  for (int i = 0; i < pairs_per_test; i++) {
    const auto seed = static_cast<unsigned>(GetParam() * pairs_per_test + i);
    search_case c = case_of_seed(seed);
    occurring += does_occur(c);
    if (difference(c, seed).empty())
      continue;
    ADD_FAILURE() << shrunk(std::move(c), seed);
    break;
  }
  EXPECT_GT(occurring, pairs_per_test / 5);
  EXPECT_LT(occurring, pairs_per_test * 4 / 5);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DomainSearches, testing::Range(0, test_count));

} // namespace kestro
