// Graphs in which many vertices look alike, and random ones, drawn by seed.
#pragma once

#include <cstdint>
#include <string>

#include "support/graphs.h"

namespace kestro {

// What a seed stands for.
struct drawn_graph {
  std::string family;
  graph_ptr g; // connected, 2 to 14 vertices in random order, vid[i] = i
};

// A graph of a random family (trees, random ones sparse and dense, rings,
// stars, complete and complete bipartite graphs, grids, prisms, circulants, the
// cube, and others) with 1 to 3 vertex and edge labels, laid out regularly, at
// random, or alike but for a few.
drawn_graph draw_graph(uint64_t seed);

// The same among the symmetric families with edges of up to two labels only.
drawn_graph draw_two_label_graph(uint64_t seed);

// A random graph that need not be connected, of up to three vertex and edge
// labels, in which vertices without edges are frequent.
drawn_graph draw_disconnected_graph(uint64_t seed);

// g as text, for messages.
std::string graph_words(const graph *g);

// The smallest graph that fails still, reached from g by leaving out vertices
// and edges one by one; what remains is connected if g is.
template <class Fails> graph_ptr shrunk_graph(graph_ptr g, Fails fails);

// Whether every vertex of a graph without marks is reached from vertex 0.
bool is_connected(const graph *g);
// g without the vertex u, later ones moving up, and without its i-th edge.
graph_ptr without_vertex(const graph *g, int u);
graph_ptr without_edge(const graph *g, size_t i);

template <class Fails> graph_ptr shrunk_graph(graph_ptr g, Fails fails) {
  const bool connected = is_connected(g.get());
  const auto try_smaller = [&](graph_ptr smaller) {
    if ((connected && !is_connected(smaller.get())) || !fails(smaller.get()))
      return false;
    g = std::move(smaller);
    return true;
  };
  for (bool changed = true; changed;) {
    changed = false;
    for (int u = 0; u < g->vs && !changed && g->vs > 1; u++)
      changed = try_smaller(without_vertex(g.get(), u));
    for (size_t i = 0; i < edges_of(g.get()).size() && !changed; i++)
      changed = try_smaller(without_edge(g.get(), i));
  }
  return g;
}

} // namespace kestro
