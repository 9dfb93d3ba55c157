// Graph families for the comparison of engines.
//
// A graph is a list of edges from one of the builders; labels are laid over it
// afterwards, and its vertices are shuffled, since the order in which a graph
// comes decides what a search meets first.

#include "support/graph_families.h"

#include <set>
#include <sstream>

namespace kestro {

namespace {

// Edges only; labels come later.
struct bare_graph {
  std::string family;
  int vs;
  std::vector<test_edge> edges;
};

void add_ring(bare_graph *b, int first, int n) {
  for (int i = 0; i < n; i++)
    b->edges.push_back({first + i, first + (i + 1) % n});
}

bare_graph ring(int n) {
  bare_graph b{"ring", n, {}};
  add_ring(&b, 0, n);
  return b;
}

bare_graph star(int n) { return {"star", n, edges_of(star_graph(n).get())}; }

bare_graph complete(int n) {
  return {"complete", n, edges_of(complete_graph(n).get())};
}

bare_graph bipartite(int a, int b) {
  bare_graph g{"bipartite", a + b, {}};
  for (int u = 0; u < a; u++)
    for (int w = a; w < a + b; w++)
      g.edges.push_back({u, w});
  return g;
}

// Complete bipartite, the edges of a perfect matching left out or labelled 1.
bare_graph matched(int n, bool left_out) {
  bare_graph g{left_out ? "crown" : "matched", 2 * n, {}};
  for (int u = 0; u < n; u++)
    for (int w = 0; w < n; w++)
      if (u != w || !left_out)
        g.edges.push_back({u, n + w, u == w});
  return g;
}

bare_graph grid(int rows, int columns, bool wrapped) {
  bare_graph g{wrapped ? "torus" : "grid", rows * columns, {}};
  for (int i = 0; i < rows; i++)
    for (int j = 0; j < columns; j++) {
      const int u = i * columns + j;
      if (j + 1 < columns || (wrapped && columns > 2))
        g.edges.push_back({u, i * columns + (j + 1) % columns});
      if (i + 1 < rows || (wrapped && rows > 2))
        g.edges.push_back({u, (i + 1) % rows * columns + j});
    }
  return g;
}

// Two rings, vertex i of one joined with vertex i * step of the other.
bare_graph prism(int n, int step) {
  bare_graph g{step == 1 ? "prism" : "twisted prism", 2 * n, {}};
  add_ring(&g, 0, n);
  for (int i = 0; i < n; i++)
    g.edges.push_back({n + i, n + (i + step) % n});
  for (int i = 0; i < n; i++)
    g.edges.push_back({i, n + i});
  return g;
}

bare_graph wheel(int n) {
  bare_graph g{"wheel", n + 1, {}};
  add_ring(&g, 0, n);
  for (int i = 0; i < n; i++)
    g.edges.push_back({i, n});
  return g;
}

// i is joined with i + s for each s in steps; the label is the step's number
// when labelled.
bare_graph circulant(int n, const std::vector<int> &steps, bool labelled) {
  bare_graph g{"circulant", n, {}};
  std::set<std::pair<int, int>> seen;
  for (size_t k = 0; k < steps.size(); k++)
    for (int i = 0; i < n; i++) {
      const int w = (i + steps[k]) % n;
      if (w != i && seen.insert(std::minmax({i, w})).second)
        g.edges.push_back({i, w, labelled ? static_cast<int>(k) : 0});
    }
  return g;
}

bare_graph cube() {
  bare_graph g{"cube", 8, {}};
  for (int u = 0; u < 8; u++)
    for (const int bit : {1, 2, 4})
      if (!(u & bit))
        g.edges.push_back({u, u | bit, bit >> 1});
  return g;
}

// The equal trees of two levels on a root.
bare_graph even_tree(int branches, int leaves) {
  bare_graph g{"even tree", 1 + branches * (1 + leaves), {}};
  for (int i = 0; i < branches; i++) {
    const int hub = 1 + i * (1 + leaves);
    g.edges.push_back({0, hub});
    for (int k = 1; k <= leaves; k++)
      g.edges.push_back({hub, hub + k});
  }
  return g;
}

// Every vertex of degree d: pairs of edges of a circulant cross over at random.
bare_graph regular(test_rng &rng, int n, int d) {
  std::vector<int> steps;
  for (int s = 1; s <= d / 2; s++)
    steps.push_back(s);
  bare_graph g = circulant(n, steps, false);
  g.family = "regular";
  std::set<std::pair<int, int>> edges;
  for (const test_edge &edge : g.edges)
    edges.insert(std::minmax({edge.u, edge.w}));
  for (int i = 0; i < 60; i++) {
    const int count = static_cast<int>(edges.size());
    const auto x = *std::next(edges.begin(), random_below(rng, count));
    const auto y = *std::next(edges.begin(), random_below(rng, count));
    const std::pair<int, int> p = std::minmax({x.first, y.second});
    const std::pair<int, int> q = std::minmax({x.second, y.first});
    if (p.first == p.second || q.first == q.second || p == q ||
        edges.count(p) || edges.count(q))
      continue;
    edges.erase(x);
    edges.erase(y);
    edges.insert(p);
    edges.insert(q);
  }
  g.edges.clear();
  for (const auto &[u, w] : edges)
    g.edges.push_back({u, w});
  return g;
}

bare_graph random_bare(test_rng &rng) {
  const int vs = 2 + random_below(rng, 13);
  const int kind = random_below(rng, 3);
  const int extra = kind == 0   ? 0
                    : kind == 1 ? 1 + random_below(rng, 4)
                                : vs + random_below(rng, vs * vs);
  const graph_ptr g = random_graph(rng, {vs, extra, 1, 1, true});
  static const char *const names[] = {"tree", "sparse", "dense"};
  return {names[kind], vs, edges_of(g.get())};
}

bare_graph symmetric_bare(test_rng &rng) {
  const auto upto = [&](int low, int high) {
    return low + random_below(rng, high - low + 1);
  };
  switch (random_below(rng, 16)) {
  case 0:
    return ring(upto(3, 14));
  case 1:
    return star(upto(3, 9));
  case 2:
    return complete(upto(2, 8));
  case 3:
    return bipartite(upto(2, 4), upto(2, 5));
  case 4:
    return matched(upto(2, 5), true);
  case 5:
    return matched(upto(2, 5), false);
  case 6:
    return grid(upto(2, 3), upto(2, 4), false);
  case 7:
    return grid(3, upto(3, 4), true);
  case 8:
    return prism(upto(3, 7), 1);
  case 9:
    return prism(5, 2); // the Petersen graph
  case 10:
    return wheel(upto(3, 10));
  case 11:
    return circulant(upto(6, 14), {1, upto(2, 5)}, upto(0, 1) == 1);
  case 12:
    return cube();
  case 13:
    return even_tree(upto(2, 3), upto(1, 3));
  case 14:
    return regular(rng, 8, 4);
  default:
    return regular(rng, upto(7, 12), 4);
  }
}

// Lays labels 0 .. count-1 over items: alike, at random, in turn, or alike but
// for up to three.
template <class Label>
void lay_labels(test_rng &rng, size_t items, int count, Label label) {
  const int layout = random_below(rng, 4);
  for (size_t i = 0; i < items; i++)
    if (layout == 1)
      label(i) = random_below(rng, count);
    else if (layout == 2)
      label(i) = static_cast<int>(i) % count;
  for (int i = random_below(rng, 4); layout == 3 && i > 0; i--)
    label(static_cast<size_t>(random_below(rng, static_cast<int>(items)))) =
        count - 1;
}

drawn_graph finished(test_rng &rng, bare_graph b, int vlabels, int elabels) {
  std::vector<int> labels(static_cast<size_t>(b.vs), 0);
  lay_labels(rng, labels.size(), vlabels,
             [&](size_t i) -> int & { return labels[i]; });
  // One in four keeps the labels that belong to the family.
  if (random_below(rng, 4) != 0) {
    for (test_edge &edge : b.edges)
      edge.label = 0;
    lay_labels(rng, b.edges.size(), elabels,
               [&](size_t i) -> int & { return b.edges[i].label; });
  }
  const graph_ptr g = make_graph(labels, b.edges);
  graph_ptr shuffled = relabelled(g.get(), random_permutation(rng, b.vs));
  std::iota(shuffled->vid, shuffled->vid + b.vs, 0);
  return {b.family, std::move(shuffled)};
}

} // namespace

drawn_graph draw_graph(uint64_t seed) {
  test_rng rng(static_cast<unsigned>(seed));
  bare_graph b =
      random_below(rng, 3) == 0 ? random_bare(rng) : symmetric_bare(rng);
  const int vlabels = 1 + random_below(rng, 3);
  const int elabels = 1 + random_below(rng, 3);
  drawn_graph drawn = finished(rng, std::move(b), vlabels, elabels);
  return drawn;
}

drawn_graph draw_two_label_graph(uint64_t seed) {
  test_rng rng(static_cast<unsigned>(seed));
  for (;;) {
    drawn_graph drawn = finished(rng, symmetric_bare(rng), 1, 2);
    if (is_connected(drawn.g.get()))
      return drawn;
  }
}

drawn_graph draw_disconnected_graph(uint64_t seed) {
  test_rng rng(static_cast<unsigned>(seed));
  const int vs = 2 + random_below(rng, 9);
  bare_graph b{"disconnected", vs, {}};
  const int chance = 1 + random_below(rng, 2 * vs); // of an edge: one in that
  for (int u = 0; u < vs; u++)
    for (int w = u + 1; w < vs; w++)
      if (random_below(rng, chance) == 0)
        b.edges.push_back({u, w});
  if (b.edges.empty())
    b.edges.push_back({0, 1 + random_below(rng, vs - 1)});
  const int vlabels = 1 + random_below(rng, 3);
  const int elabels = 1 + random_below(rng, 3);
  return finished(rng, std::move(b), vlabels, elabels);
}

std::string graph_words(const graph *g) {
  std::ostringstream text;
  text << g->vs << " vertices labelled";
  for (int i = 0; i < g->vs; i++)
    text << ' ' << g->vlabel[i];
  text << ", edges";
  for (const test_edge &edge : edges_of(g))
    text << ' ' << edge.u << '-' << edge.w << ':' << edge.label;
  return text.str();
}

bool is_connected(const graph *g) {
  std::vector<int> reached = {0};
  std::vector<bool> seen(static_cast<size_t>(g->vs), false);
  seen[0] = true;
  for (size_t i = 0; i < reached.size(); i++)
    for (int j = g->v[reached[i]]; j < g->v[reached[i] + 1]; j++)
      if (!seen[static_cast<size_t>(g->e[j])]) {
        seen[static_cast<size_t>(g->e[j])] = true;
        reached.push_back(g->e[j]);
      }
  return static_cast<int>(reached.size()) == g->vs;
}

graph_ptr without_vertex(const graph *g, int u) {
  std::vector<int> labels = vlabels_of(g);
  labels.erase(labels.begin() + u);
  std::vector<test_edge> edges;
  for (const test_edge &edge : edges_of(g))
    if (edge.u != u && edge.w != u)
      edges.push_back(
          {edge.u - (edge.u > u), edge.w - (edge.w > u), edge.label});
  return make_graph(labels, edges);
}

graph_ptr without_edge(const graph *g, size_t i) {
  std::vector<test_edge> edges = edges_of(g);
  edges.erase(edges.begin() + static_cast<std::ptrdiff_t>(i));
  return make_graph(vlabels_of(g), edges);
}

} // namespace kestro
