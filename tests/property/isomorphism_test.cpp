// Every search for a pattern in a graph against all maps found by trying, on
// random pairs of small graphs.
//
// Of a search that returns one map it is also asked that the map is the first
// one in the order of its vertices, since that is what trying targets in
// ascending number gives; listings must be complete and free of repeats.

#include "reference/cl/subgraph_isomorphism.h"

#include <algorithm>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "base/error.h"
#include "reference/cl/isomorphism_calls.h"
#include "reference/cl/next_isomorphism.h"
#include "support/graphs.h"
#include "support/plain_graph.h"

namespace kestro {

namespace {

constexpr int pairs_per_test = 1600;
constexpr int test_count = 8;

plain_graph plain_of(const graph *g) {
  plain_graph plain;
  for (const int label : vlabels_of(g))
    plain.vertices.push_back(std::to_string(label));
  for (const test_edge &edge : edges_of(g))
    plain.edges.push_back({edge.u, edge.w, std::to_string(edge.label)});
  return plain;
}

graph_ptr random_pattern(test_rng &rng, int labels) {
  random_graph_shape shape;
  shape.vs = 2 + random_below(rng, 5);
  shape.extra_edges = random_below(rng, 4);
  shape.vlabels = shape.elabels = labels;
  return random_graph(rng, shape);
}

// g1 in another vertex order, with some more vertices and edges.
graph_ptr random_supergraph(test_rng &rng, const graph *g1, int labels) {
  std::vector<int> vlabels = vlabels_of(g1);
  std::vector<test_edge> edges = edges_of(g1);
  for (int i = random_below(rng, 4); i > 0; i--) {
    const int n = static_cast<int>(vlabels.size());
    vlabels.push_back(random_below(rng, labels));
    edges.push_back({random_below(rng, n), n, random_below(rng, labels)});
    if (n > g1->vs && random_below(rng, 2) == 0 && edges.back().u != n - 1)
      edges.push_back({n - 1, n, random_below(rng, labels)});
  }
  const graph_ptr g2 = make_graph(vlabels, edges);
  return relabelled(g2.get(), random_permutation(rng, g2->vs));
}

graph_ptr random_target(test_rng &rng, const graph *g1, int labels) {
  const int kind = random_below(rng, 3);
  if (kind == 0)
    return random_supergraph(rng, g1, labels);
  random_graph_shape shape;
  shape.vs = 2 + random_below(rng, 8);
  shape.extra_edges = random_below(rng, 1 + shape.vs);
  shape.vlabels = shape.elabels = labels;
  shape.connected = kind == 1;
  return random_graph(rng, shape);
}

// A pattern, a graph to look for it in, and the truth.
struct graph_pair {
  graph_ptr g1, g2;
  std::vector<plain_map> maps; // all of them, ascending
};

graph_pair random_pair(test_rng &rng) {
  const int labels = 1 + random_below(rng, 3);
  graph_pair pair;
  pair.g1 = random_pattern(rng, labels);
  pair.g2 = random_target(rng, pair.g1.get(), labels);
  pair.maps = plain_maps(plain_of(pair.g1.get()), plain_of(pair.g2.get()));
  return pair;
}

std::string text_of(const graph_pair &pair) {
  return "pattern\n" + plain_text(plain_of(pair.g1.get())) + "graph\n" +
         plain_text(plain_of(pair.g2.get()));
}

// The images of order[0], order[1], ...
plain_map along(const plain_map &map, const std::vector<int> &order) {
  plain_map images;
  for (const int u : order)
    images.push_back(map[static_cast<size_t>(u)]);
  return images;
}

// The maps in lexicographic order of the images along order.
std::vector<plain_map> sorted_along(std::vector<plain_map> maps,
                                    const std::vector<int> &order) {
  std::sort(maps.begin(), maps.end(),
            [&](const plain_map &a, const plain_map &b) {
              return along(a, order) < along(b, order);
            });
  return maps;
}

// The elements of a stack of maps, which is freed; none for null.
std::vector<plain_map> taken(ksstack *stack, int vs) {
  const ksstack_ptr owner(stack);
  std::vector<plain_map> maps;
  for (int i = 0; stack != nullptr && i < stack->count; i++) {
    const int *map = static_cast<const int *>(ksstack_at(stack, i));
    maps.emplace_back(map, map + vs);
  }
  return maps;
}

std::vector<plain_map> sorted(std::vector<plain_map> maps) {
  std::sort(maps.begin(), maps.end());
  return maps;
}

bool is_permutation_of_vertices(std::vector<int> order, int n) {
  std::sort(order.begin(), order.end());
  return order == identity_of(n);
}

// A map of some, not all, vertices that keeps the edges among them, though not
// always a part of a complete map.
struct partial_map {
  std::vector<int> active; // 1 for the vertices that have an image
  plain_map map;           // -1 for the others
};

bool image_fits(const graph_pair &pair, const plain_map &map, int u, int w) {
  if (pair.g1->vlabel[u] != pair.g2->vlabel[w] ||
      std::count(map.begin(), map.end(), w) != 0)
    return false;
  for (const test_edge &edge : edges_of(pair.g1.get())) {
    if (edge.u != u && edge.w != u)
      continue;
    const int image = map[static_cast<size_t>(edge.u + edge.w - u)];
    if (image >= 0 && graph_edge_label(pair.g2.get(), w, image) != edge.label)
      return false;
  }
  return true;
}

partial_map random_partial_map(test_rng &rng, const graph_pair &pair) {
  const size_t vs = static_cast<size_t>(pair.g1->vs);
  partial_map fixed{std::vector<int>(vs, 0), plain_map(vs, -1)};
  const std::vector<int> vertices = random_permutation(rng, pair.g1->vs);
  const int wanted = random_below(rng, pair.g1->vs);
  const bool extensible = !pair.maps.empty() && random_below(rng, 2) == 0;
  const plain_map model =
      extensible ? pair.maps[static_cast<size_t>(
                       random_below(rng, static_cast<int>(pair.maps.size())))]
                 : plain_map();
  for (int i = 0; i < wanted; i++) {
    const int u = vertices[static_cast<size_t>(i)];
    const int w = extensible ? model[static_cast<size_t>(u)]
                             : random_below(rng, pair.g2->vs);
    if (!image_fits(pair, fixed.map, u, w))
      continue;
    fixed.active[static_cast<size_t>(u)] = 1;
    fixed.map[static_cast<size_t>(u)] = w;
  }
  return fixed;
}

std::vector<plain_map> extensions(const graph_pair &pair,
                                  const partial_map &fixed) {
  std::vector<plain_map> maps;
  for (const plain_map &map : pair.maps) {
    bool extends = true;
    for (size_t u = 0; u < map.size(); u++)
      extends = extends && (!fixed.active[u] || map[u] == fixed.map[u]);
    if (extends)
      maps.push_back(map);
  }
  return maps;
}

// The fixed vertices, ascending, and then the others in random order.
std::vector<int> fixed_first(test_rng &rng, const partial_map &fixed) {
  std::vector<int> order =
      random_permutation(rng, static_cast<int>(fixed.active.size()));
  const auto middle =
      std::stable_partition(order.begin(), order.end(), [&](int u) {
        return fixed.active[static_cast<size_t>(u)] != 0;
      });
  std::sort(order.begin(), middle);
  return order;
}

} // namespace

class Isomorphism : public testing::TestWithParam<int> {
protected:
  // Calls check with one random pair after the other until one fails.
  template <class F> void on_random_pairs(const F &check) {
    test_rng rng(static_cast<unsigned>(GetParam()));
    for (int i = 0; i < pairs_per_test && !HasFailure(); i++) {
      const graph_pair pair = random_pair(rng);
      if (pair.g1->vs <= pair.g2->vs)
        check(rng, pair);
      else
        expect_refusal(pair);
      if (HasFailure())
        ADD_FAILURE() << "rng seed " << GetParam() << ", pair " << i << '\n'
                      << text_of(pair);
    }
  }

  static void expect_refusal(const graph_pair &pair) {
    const graph *g1 = pair.g1.get(), *g2 = pair.g2.get();
    std::vector<int> map(static_cast<size_t>(g1->vs), -1);
    const std::vector<int> order = identity_of(g1->vs);
    EXPECT_THROW(graph_find_isomorphism(g1, g2), fatal_error);
    EXPECT_THROW(
        graph_find_isomorphism_by_order(g1, g2, map.data(), order.data()),
        fatal_error);
    EXPECT_THROW(graph_all_isomorphisms(g1, g2), fatal_error);
    EXPECT_THROW(graph_next_isomorphism(g1, g2, order.data(), map.data()),
                 fatal_error);
  }
};

TEST_P(Isomorphism, FindsAMapWhereThereIsOne) {
  on_random_pairs([](test_rng &rng, const graph_pair &pair) {
    const graph *g1 = pair.g1.get(), *g2 = pair.g2.get();
    const int found = !pair.maps.empty();
    std::vector<int> map(static_cast<size_t>(g1->vs)), order = map;

    EXPECT_EQ(graph_find_isomorphism(g1, g2), found);
    EXPECT_EQ(graph_find_isomorphism_map(g1, g2, map.data()), found);
    if (found) {
      EXPECT_TRUE(is_mapping(g1, g2, map));
    }

    EXPECT_EQ(
        graph_find_isomorphism_and_order(g1, g2, map.data(), order.data()),
        found);
    if (found) {
      EXPECT_TRUE(is_mapping(g1, g2, map));
      ASSERT_TRUE(is_permutation_of_vertices(order, g1->vs));
      EXPECT_EQ(map, sorted_along(pair.maps, order).front());
    }

    order = random_permutation(rng, g1->vs);
    EXPECT_EQ(graph_find_isomorphism_by_order(g1, g2, map.data(), order.data()),
              found);
    if (found) {
      EXPECT_EQ(map, sorted_along(pair.maps, order).front());
    }
  });
}

TEST_P(Isomorphism, ExtendsAPartialMapWhereItCanBeExtended) {
  on_random_pairs([](test_rng &rng, const graph_pair &pair) {
    const graph *g1 = pair.g1.get(), *g2 = pair.g2.get();
    const partial_map fixed = random_partial_map(rng, pair);
    const std::vector<plain_map> expected = extensions(pair, fixed);
    const int found = !expected.empty();

    std::vector<int> map = fixed.map, order(map.size(), -1);
    EXPECT_EQ(graph_extend_isomorphism_and_order(
                  g1, g2, map.data(), order.data(), fixed.active.data()),
              found);
    if (found) {
      EXPECT_NE(std::find(expected.begin(), expected.end(), map),
                expected.end());
    }

    map = fixed.map;
    order = fixed_first(rng, fixed);
    EXPECT_EQ(graph_extend_isomorphism_by_order(
                  g1, g2, map.data(), order.data(), fixed.active.data()),
              found);
    if (found) {
      EXPECT_EQ(map, sorted_along(expected, order).front());
    }

    map = fixed.map;
    EXPECT_EQ(sorted(taken(graph_isomorphisms_extending(g1, g2, map.data(),
                                                        fixed.active.data()),
                           g1->vs)),
              expected);
  });
}

TEST_P(Isomorphism, ListsEveryMapOnce) {
  on_random_pairs([](test_rng &rng, const graph_pair &pair) {
    const graph *g1 = pair.g1.get(), *g2 = pair.g2.get();
    ksstack *const stack = graph_all_isomorphisms(g1, g2);
    EXPECT_EQ(stack == nullptr, pair.maps.empty());
    EXPECT_EQ(sorted(taken(stack, g1->vs)), pair.maps);

    const std::vector<int> order = random_permutation(rng, g1->vs);
    std::vector<int> map(order.size(), -1);
    for (const plain_map &next : sorted_along(pair.maps, order)) {
      ASSERT_EQ(graph_next_isomorphism(g1, g2, order.data(), map.data()), 1);
      ASSERT_EQ(map, next);
    }
    EXPECT_EQ(graph_next_isomorphism(g1, g2, order.data(), map.data()), 0);
  });
}

INSTANTIATE_TEST_SUITE_P(Seeds, Isomorphism, testing::Range(0, test_count));

} // namespace kestro
