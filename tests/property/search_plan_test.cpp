// Prepared searches against the naive matcher: what is found, and that it is
// the first mapping along the order.  Seeds are fixed.

#include "cl/search_plan.h"

#include <climits>

#include <gtest/gtest.h>

#include "graph/graph_list.h"
#include "support/graph_families.h"

namespace kestro {

namespace {

constexpr int pairs_per_test = 2000;
constexpr int test_count = 8;

struct search_case {
  graph_ptr pattern; // connected, 1 to 6 vertices
  graph_ptr target;  // 1 to 8 vertices
};

// A star whose leaves have one of two labels, or with arms of two edges: what
// the search treats in a way of its own.
graph_ptr random_star(test_rng &rng, int leaves) {
  std::vector<int> labels = {random_below(rng, 2)};
  std::vector<test_edge> edges;
  for (int i = 1; i <= leaves; i++) {
    const bool on_a_leaf = i > 1 && random_below(rng, 4) == 0;
    const int hub = on_a_leaf ? 1 + random_below(rng, i - 1) : 0;
    labels.push_back(random_below(rng, 4) == 0);
    edges.push_back({hub, i, random_below(rng, 4) == 0});
  }
  const graph_ptr g = make_graph(labels, edges);
  return relabelled(g.get(), random_permutation(rng, g->vs));
}

search_case case_of_seed(unsigned seed) {
  test_rng rng(seed);
  const int labels = 1 + random_below(rng, 2);
  const int vs = 1 + random_below(rng, 6);
  if (random_below(rng, 3) == 0)
    return {random_star(rng, 1 + random_below(rng, 5)),
            random_star(rng, 2 + random_below(rng, 6))};
  return {random_graph(rng, {vs, random_below(rng, 4), labels,
                             1 + random_below(rng, 2), true}),
          random_graph(rng,
                       {1 + random_below(rng, 8), random_below(rng, 20), labels,
                        1 + random_below(rng, 2), random_below(rng, 4) != 0})};
}

// An order in which each vertex but the first has a neighbour before it.
std::vector<int> random_order(test_rng &rng, const graph *g) {
  std::vector<int> order = {random_below(rng, g->vs)};
  while (static_cast<int>(order.size()) < g->vs) {
    const int u = random_below(rng, g->vs);
    const bool reached = std::any_of(order.begin(), order.end(), [&](int w) {
      return graph_edge_label(g, u, w) != -1;
    });
    if (reached && std::find(order.begin(), order.end(), u) == order.end())
      order.push_back(u);
  }
  return order;
}

// The first of maps in lexicographic order along an order.
std::vector<int> first_along(const std::vector<std::vector<int>> &maps,
                             const std::vector<int> &order) {
  return *std::min_element(
      maps.begin(), maps.end(), [&](const auto &a, const auto &b) {
        for (const int u : order)
          if (a[static_cast<size_t>(u)] != b[static_cast<size_t>(u)])
            return a[static_cast<size_t>(u)] < b[static_cast<size_t>(u)];
        return false;
      });
}

// The mappings of a walk.
std::vector<std::vector<int>> walked(const search_plan &plan,
                                     const graph *pattern, const graph *target,
                                     twin_images twins, int patience) {
  std::vector<std::vector<int>> maps;
  std::vector<int> image(static_cast<size_t>(pattern->vs), -7);
  search_memory memory;
  memory.patience = patience;
  memory.look_after = patience == INT_MAX ? 0 : 24;
  for (bool more = plan.first(target, twins, &memory, image.data()); more;
       more = plan.next(target, twins, &memory, image.data()))
    maps.push_back(image);
  return maps;
}

// What is wrong with the walks along an order, or "".
std::string wrong_walk(const search_plan &plan, const graph *pattern,
                       const graph *target, const std::vector<int> &order,
                       std::vector<std::vector<int>> maps) {
  std::sort(maps.begin(), maps.end(), [&](const auto &a, const auto &b) {
    return a != b && first_along({a, b}, order) == a;
  });
  const int patience = maps.size() % 2 ? 0 : INT_MAX;
  if (walked(plan, pattern, target, twin_images::any, patience) != maps)
    return "not all mappings in order";
  auto count =
      walked(plan, pattern, target, twin_images::ascending, patience).size();
  for (int d = 0; d < pattern->vs; d++)
    count *= static_cast<size_t>(plan.twins_up_to(d));
  return count == maps.size() ? "" : "not as many as there are twins";
}

// What is wrong with the searches for a case, or "".
std::string difference(const graph *pattern, const graph *target,
                       unsigned seed) {
  test_rng rng(seed);
  const auto maps = naive_maps(pattern, target);
  std::vector<int> image(static_cast<size_t>(pattern->vs), -7);
  for (int round = 0; round < 3; round++) {
    const std::vector<int> order = random_order(rng, pattern);
    search_plan plan(pattern, order.data());
    plan.memory().patience = round == 0 ? 0 : 2048;
    plan.memory().look_after = round == 1 ? 0 : 24;
    const bool found = plan.find(target, image.data());
    if (found == maps.empty())
      return found ? "found along an order" : "not found along an order";
    if (found && image != first_along(maps, order))
      return "not the first mapping";
    const std::string wrong = wrong_walk(plan, pattern, target, order, maps);
    if (!wrong.empty())
      return wrong;
  }
  return "";
}

// The same for searches in a list of graphs: they find exactly when the search
// in the graph alone does, the same along the same order, and so does a plan
// whose order comes from the list.
std::string difference_in_list(const graph *pattern, const graph_list *graphs,
                               unsigned seed) {
  test_rng rng(seed);
  const graph_profiles profiles(graphs);
  const std::vector<int> order = random_order(rng, pattern);
  search_plan plan(pattern, order.data());
  search_plan rarest;
  rarest.set_rarest_first(pattern, profiles);
  if (seed % 16 == 0)
    plan.memory().patience = rarest.memory().patience = 0;
  if (seed % 4 == 1)
    plan.memory().look_after = rarest.memory().look_after = 0;
  std::vector<int> image(static_cast<size_t>(pattern->vs), -7);
  std::vector<int> alone = image;
  for (int i = 0; i < graphs->count; i++) {
    const graph *t = graph_list_at(graphs, i);
    const auto maps = naive_maps(pattern, t);
    const bool found = plan.find(profiles, i, image.data());
    if (found == maps.empty())
      return found ? "found in the list" : "not found in the list";
    if (plan.find(t, alone.data()) != found)
      return "graph and list differ";
    if (found && image != alone)
      return "not the same mapping";
    for (int round = 0; round < 2; round++) {
      if (rarest.find(t, image.data()) != found ||
          rarest.find(profiles, i, image.data()) != found)
        return "rarest first differs";
      if (found && std::find(maps.begin(), maps.end(), image) == maps.end())
        return "no mapping";
    }
  }
  return "";
}

// The failure with target and pattern shrunk as far as it lasts.
std::string shrunk(search_case c, unsigned seed) {
  c.target = shrunk_graph(std::move(c.target), [&](const graph *t) {
    return !difference(c.pattern.get(), t, seed).empty();
  });
  c.pattern = shrunk_graph(std::move(c.pattern), [&](const graph *p) {
    return !difference(p, c.target.get(), seed).empty();
  });
  return "seed " + std::to_string(seed) + ": " +
         difference(c.pattern.get(), c.target.get(), seed) + '\n' +
         graph_words(c.pattern.get()) + "\nin " + graph_words(c.target.get());
}

class SearchPlans : public testing::TestWithParam<int> {};

} // namespace

TEST_P(SearchPlans, FindTheFirstMappingAlongTheirOrder) {
  int occurring = 0;
  for (int i = 0; i < pairs_per_test; i++) {
    const auto seed = static_cast<unsigned>(GetParam() * pairs_per_test + i);
    search_case c = case_of_seed(seed);
    occurring += !naive_maps(c.pattern.get(), c.target.get()).empty();
    if (difference(c.pattern.get(), c.target.get(), seed).empty())
      continue;
    ADD_FAILURE() << shrunk(std::move(c), seed);
    break;
  }
  EXPECT_GT(occurring, pairs_per_test / 5);
  EXPECT_LT(occurring, pairs_per_test * 4 / 5);
}

TEST_P(SearchPlans, FindInAListWhatTheyFindInItsGraphs) {
  constexpr int patterns = 8;
  for (int i = 0; i < pairs_per_test / (patterns * patterns); i++) {
    const auto seed =
        static_cast<unsigned>(GetParam() * pairs_per_test + i) * patterns;
    graph_list_ptr graphs(graph_list_new());
    std::vector<graph_ptr> wanted;
    for (unsigned j = 0; j < patterns; j++) {
      search_case c = case_of_seed(seed + j);
      wanted.push_back(std::move(c.pattern));
      graph_list_push(std::move(c.target), graphs.get());
    }
    for (const graph_ptr &pattern : wanted)
      ASSERT_EQ(difference_in_list(pattern.get(), graphs.get(), seed), "")
          << "seed " << seed << ": " << graph_words(pattern.get());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, SearchPlans, testing::Range(0, test_count));

} // namespace kestro
