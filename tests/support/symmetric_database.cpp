// Symmetric graphs, edge by edge.
//
// A builder is drawn with sizes; what is too large is drawn again.  The label
// of an edge tells which kind of edge it is in the construction, and is kept or
// left out for the whole graph.

#include "support/symmetric_database.h"

#include <algorithm>
#include <set>
#include <utility>

namespace kestro {

namespace {

// Without labels of vertices; those of edges are kinds.
struct kinds_of_edges {
  int vs = 0;
  std::vector<plain_edge> edges;

  void join(int u, int w, const char *kind = "x") {
    edges.push_back({u, w, kind});
  }
};

kinds_of_edges circulant(dice *chance) {
  kinds_of_edges g;
  g.vs = chance->between(3, 8);
  const int steps[] = {1, chance->between(1, 3)};
  std::set<std::pair<int, int>> seen;
  for (const int step : steps)
    for (int u = 0; u < g.vs; u++) {
      const int w = (u + step) % g.vs;
      if (u != w && seen.insert(std::minmax(u, w)).second)
        g.join(u, w, step == 1 ? "x" : "y");
    }
  return g;
}

// Legs of one to three edges on one vertex.
kinds_of_edges spider(dice *chance) {
  kinds_of_edges g;
  const int legs = chance->between(3, 6);
  const int length = chance->between(1, 3);
  g.vs = 1;
  for (int leg = 0; leg < legs; leg++)
    for (int i = 0; i < length; i++, g.vs++)
      g.join(i == 0 ? 0 : g.vs - 1, g.vs, i == 0 ? "x" : "y");
  return g;
}

kinds_of_edges row_of_hubs(dice *chance) {
  kinds_of_edges g;
  const int hubs = chance->between(2, 3);
  const int leaves = chance->between(1, 4);
  g.vs = hubs;
  for (int hub = 0; hub < hubs; hub++) {
    if (hub > 0)
      g.join(hub - 1, hub);
    for (int i = 0; i < leaves; i++)
      g.join(hub, g.vs++, "y");
  }
  return g;
}

// Of equal sides a perfect matching is of another kind.
kinds_of_edges bipartite(dice *chance) {
  kinds_of_edges g;
  const int a = chance->between(2, 3);
  const int b = chance->between(2, 5);
  g.vs = a + b;
  for (int u = 0; u < a; u++)
    for (int w = 0; w < b; w++)
      g.join(u, a + w, a == b && u == w ? "y" : "x");
  return g;
}

kinds_of_edges complete(dice *chance) {
  kinds_of_edges g;
  g.vs = chance->between(3, 5);
  for (int u = 0; u < g.vs; u++)
    for (int w = u + 1; w < g.vs; w++)
      g.join(u, w, u / 2 == w / 2 ? "y" : "x");
  return g;
}

// The product of a path or ring with another one.
kinds_of_edges product(dice *chance) {
  kinds_of_edges g;
  const int rows = chance->between(2, 3);
  const int columns = chance->between(2, 4);
  const bool wraps_rows = rows > 2 && chance->one_in(2);
  const bool wraps_columns = columns > 2 && chance->one_in(2);
  g.vs = rows * columns;
  for (int i = 0; i < rows; i++)
    for (int j = 0; j < columns; j++) {
      if (i + 1 < rows || wraps_rows)
        g.join(i * columns + j, (i + 1) % rows * columns + j);
      if (j + 1 < columns || wraps_columns)
        g.join(i * columns + j, i * columns + (j + 1) % columns, "y");
    }
  return g;
}

kinds_of_edges draw(dice *chance, int max_edges) {
  for (;;) {
    kinds_of_edges g;
    switch (chance->below(6)) {
    case 0:
      g = circulant(chance);
      break;
    case 1:
      g = spider(chance);
      break;
    case 2:
      g = row_of_hubs(chance);
      break;
    case 3:
      g = bipartite(chance);
      break;
    case 4:
      g = complete(chance);
      break;
    default:
      g = product(chance);
    }
    if (static_cast<int>(g.edges.size()) <= max_edges)
      return g;
  }
}

// As many copies side by side.
void copy(kinds_of_edges *g, int copies) {
  const std::vector<plain_edge> one = g->edges;
  const int vs = g->vs;
  for (; copies > 1; copies--) {
    for (const plain_edge &edge : one)
      g->edges.push_back({g->vs + edge.from, g->vs + edge.to, edge.label});
    g->vs += vs;
  }
}

// The distances of all vertices from vertex 0, odd for those that it does not
// reach.
std::vector<int> distances(const kinds_of_edges &g) {
  std::vector<int> found(static_cast<size_t>(g.vs), g.vs * 2 + 1);
  found[0] = 0;
  for (int round = 0; round < g.vs; round++)
    for (const plain_edge &edge : g.edges) {
      int &from = found[static_cast<size_t>(edge.from)];
      int &to = found[static_cast<size_t>(edge.to)];
      from = std::min(from, to + 1);
      to = std::min(to, from + 1);
    }
  return found;
}

plain_graph transaction(dice *chance, int max_edges) {
  const bool alone = !chance->one_in(5);
  kinds_of_edges g = draw(chance, alone ? max_edges : max_edges / 2);
  if (!alone)
    copy(&g, 2);
  plain_graph t;
  t.vertices.assign(static_cast<size_t>(g.vs), "A");
  if (chance->one_in(4)) {
    const std::vector<int> from_first = distances(g);
    for (size_t u = 0; u < t.vertices.size(); u++)
      t.vertices[u] = from_first[u] % 2 ? "B" : "A";
  }
  t.edges = g.edges;
  if (!chance->one_in(3))
    for (plain_edge &edge : t.edges)
      edge.label = "x";
  if (static_cast<int>(t.edges.size()) < max_edges && chance->one_in(4)) {
    t.edges.push_back({chance->below(g.vs), g.vs, "x"});
    t.vertices.emplace_back("A");
  }
  // The order in which vertices come is one of any.
  std::vector<int> place;
  for (int u = 0; u < static_cast<int>(t.vertices.size()); u++)
    place.insert(place.begin() + chance->between(0, u), u);
  plain_graph shuffled = t;
  for (size_t u = 0; u < place.size(); u++)
    shuffled.vertices[static_cast<size_t>(place[u])] = t.vertices[u];
  for (plain_edge &edge : shuffled.edges) {
    edge.from = place[static_cast<size_t>(edge.from)];
    edge.to = place[static_cast<size_t>(edge.to)];
  }
  return shuffled;
}

} // namespace

std::vector<plain_graph> symmetric_database(dice *chance, int max_edges) {
  std::vector<plain_graph> database;
  for (int i = chance->between(1, 3); i > 0; i--)
    database.push_back(transaction(chance, max_edges));
  return database;
}

} // namespace kestro
