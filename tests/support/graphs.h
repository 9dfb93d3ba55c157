// Small graphs for tests: building, drawing at random, relabelling, and the
// slow, obvious matcher that the isomorphism engine is compared with.
#pragma once

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "graph/graph.h"

namespace kestro {

// An edge between vertices u and w.
struct test_edge {
  int u;
  int w;
  int label = 0;
};

// A graph with these vertex labels and edges, neighbour lists ascending, vid[i]
// = i and key 0.
inline graph_ptr make_graph(const std::vector<int> &vlabels,
                            const std::vector<test_edge> &edges) {
  std::vector<test_edge> slots;
  for (const test_edge &edge : edges) {
    slots.push_back(edge);
    slots.push_back({edge.w, edge.u, edge.label});
  }
  std::sort(slots.begin(), slots.end(),
            [](const test_edge &a, const test_edge &b) {
              return a.u != b.u ? a.u < b.u : a.w < b.w;
            });
  const int vs = static_cast<int>(vlabels.size());
  const int es = static_cast<int>(slots.size());
  graph_ptr g(graph_create(es, vs));
  std::copy(vlabels.begin(), vlabels.end(), g->vlabel);
  std::iota(g->vid, g->vid + vs, 0);
  std::fill(g->v, g->v + vs + 1, 0);
  for (size_t j = 0; j < slots.size(); j++) {
    g->e[j] = slots[j].w;
    g->elabel[j] = slots[j].label;
    g->v[slots[j].u + 1]++;
  }
  std::partial_sum(g->v, g->v + vs + 1, g->v);
  graph_check(g.get());
  return g;
}

// The edges of an unmarked graph, each once, smaller end first.
inline std::vector<test_edge> edges_of(const graph *g) {
  std::vector<test_edge> edges;
  for (int u = 0; u < g->vs; u++)
    for (int j = g->v[u]; j < g->v[u + 1]; j++)
      if (u < g->e[j])
        edges.push_back({u, g->e[j], g->elabel[j]});
  return edges;
}

inline std::vector<int> vlabels_of(const graph *g) {
  return std::vector<int>(g->vlabel, g->vlabel + g->vs);
}

// 0 .. n-1.
inline std::vector<int> identity_of(int n) {
  std::vector<int> identity(static_cast<size_t>(n));
  std::iota(identity.begin(), identity.end(), 0);
  return identity;
}

// Named shapes of n vertices, all labels 0: a path 0-1-..-(n-1), the ring it
// closes to (n >= 3), the complete graph, and a star around vertex 0.
inline graph_ptr path_graph(int n) {
  std::vector<test_edge> edges;
  for (int i = 1; i < n; i++)
    edges.push_back({i - 1, i});
  return make_graph(std::vector<int>(static_cast<size_t>(n), 0), edges);
}
inline graph_ptr ring_graph(int n) {
  std::vector<test_edge> edges;
  edges.reserve(static_cast<size_t>(n));
  for (int i = 0; i < n; i++)
    edges.push_back({i, (i + 1) % n});
  return make_graph(std::vector<int>(static_cast<size_t>(n), 0), edges);
}
inline graph_ptr complete_graph(int n) {
  std::vector<test_edge> edges;
  for (int u = 0; u < n; u++)
    for (int w = u + 1; w < n; w++)
      edges.push_back({u, w});
  return make_graph(std::vector<int>(static_cast<size_t>(n), 0), edges);
}
inline graph_ptr star_graph(int n) {
  std::vector<test_edge> edges;
  for (int i = 1; i < n; i++)
    edges.push_back({0, i});
  return make_graph(std::vector<int>(static_cast<size_t>(n), 0), edges);
}

using test_rng = std::mt19937;

// A number in 0 .. n-1; the same on every platform for one seed.
inline int random_below(test_rng &rng, int n) {
  return static_cast<int>(rng() % static_cast<unsigned>(n));
}

// What random_graph() draws from.
struct random_graph_shape {
  int vs = 5;            // vertices
  int extra_edges = 2;   // edges tried beyond those of a spanning tree
  int vlabels = 2;       // vertex labels 0 .. vlabels-1
  int elabels = 2;       // edge labels 0 .. elabels-1
  bool connected = true; // false: no spanning tree, only the extra edges
};

inline graph_ptr random_graph(test_rng &rng, const random_graph_shape &shape) {
  std::vector<int> vlabels;
  vlabels.reserve(static_cast<size_t>(shape.vs));
  for (int i = 0; i < shape.vs; i++)
    vlabels.push_back(random_below(rng, shape.vlabels));
  std::vector<test_edge> edges;
  const auto add = [&](int u, int w) {
    for (const test_edge &edge : edges)
      if ((edge.u == u && edge.w == w) || (edge.u == w && edge.w == u))
        return;
    if (u != w)
      edges.push_back({u, w, random_below(rng, shape.elabels)});
  };
  for (int i = 1; shape.connected && i < shape.vs; i++)
    add(random_below(rng, i), i);
  for (int i = 0; i < shape.extra_edges; i++) {
    const int u = random_below(rng, shape.vs);
    add(u, random_below(rng, shape.vs));
  }
  return make_graph(vlabels, edges);
}

inline std::vector<int> random_permutation(test_rng &rng, int n) {
  std::vector<int> perm = identity_of(n);
  for (int i = n - 1; i > 0; i--)
    std::swap(perm[static_cast<size_t>(i)],
              perm[static_cast<size_t>(random_below(rng, i + 1))]);
  return perm;
}

// The same graph with vertex i renamed to perm[i]; vid tells the old number:
// vid[perm[i]] = i.
inline graph_ptr relabelled(const graph *g, const std::vector<int> &perm) {
  const auto to = [&](int i) { return perm[static_cast<size_t>(i)]; };
  std::vector<int> vlabels(perm.size());
  for (int i = 0; i < g->vs; i++)
    vlabels[static_cast<size_t>(to(i))] = g->vlabel[i];
  std::vector<test_edge> edges = edges_of(g);
  for (test_edge &edge : edges)
    edge = {to(edge.u), to(edge.w), edge.label};
  graph_ptr copy = make_graph(vlabels, edges);
  for (int i = 0; i < g->vs; i++)
    copy->vid[to(i)] = i;
  return copy;
}

// Whether two graphs have the same e, v, elabel and vlabel: what the canonical
// form and the key are made of.
inline bool same_structure(const graph *a, const graph *b) {
  return a->es == b->es && a->vs == b->vs &&
         std::equal(a->e, a->e + a->es, b->e) &&
         std::equal(a->v, a->v + a->vs + 1, b->v) &&
         std::equal(a->elabel, a->elabel + a->es, b->elabel) &&
         std::equal(a->vlabel, a->vlabel + a->vs, b->vlabel);
}

// Whether map, an injection of g1's vertices into g2's, keeps every vertex
// label and every edge with its label.
inline bool is_mapping(const graph *g1, const graph *g2,
                       const std::vector<int> &map) {
  const auto to = [&](int i) { return map[static_cast<size_t>(i)]; };
  for (int u = 0; u < g1->vs; u++)
    if (g1->vlabel[u] != g2->vlabel[to(u)])
      return false;
  for (const test_edge &edge : edges_of(g1))
    if (graph_edge_label(g2, to(edge.u), to(edge.w)) != edge.label)
      return false;
  return true;
}

// Every mapping of g1 into g2 (map[u] is the image of u), found by trying all
// injections; in lexicographic order of map[0], map[1], ...
inline std::vector<std::vector<int>> naive_maps(const graph *g1,
                                                const graph *g2) {
  std::vector<std::vector<int>> found;
  std::vector<int> map;
  const auto extend = [&](auto &&self) -> void {
    if (static_cast<int>(map.size()) == g1->vs) {
      if (is_mapping(g1, g2, map))
        found.push_back(map);
      return;
    }
    for (int w = 0; w < g2->vs; w++) {
      if (std::find(map.begin(), map.end(), w) != map.end())
        continue;
      map.push_back(w);
      self(self);
      map.pop_back();
    }
  };
  extend(extend);
  return found;
}

} // namespace kestro
