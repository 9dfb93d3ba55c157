// Random databases in which mining has something to find.
//
// Independent random graphs share hardly more than single edges, so half of
// the transactions are earlier ones with another vertex order and an edge or
// two added, taken away or relabelled.  All choices come from one dice, in a
// fixed order: the same seed gives the same database everywhere.

#include "support/random_database.h"

#include <algorithm>
#include <cstddef>

namespace kestro {

int dice::below(int n) {
  return static_cast<int>(engine_() % static_cast<uint64_t>(n));
}

namespace {

struct label_counts {
  int vertex, edge;
};

std::string vertex_label(dice *chance, const label_counts &labels) {
  return std::string(1, static_cast<char>('A' + chance->below(labels.vertex)));
}

std::string edge_label(dice *chance, const label_counts &labels) {
  return std::string(1, static_cast<char>('x' + chance->below(labels.edge)));
}

bool has_edge(const plain_graph &g, int u, int w) {
  return std::any_of(g.edges.begin(), g.edges.end(), [=](const plain_edge &e) {
    return (e.from == u && e.to == w) || (e.from == w && e.to == u);
  });
}

void add_vertices(plain_graph *g, int n, dice *chance,
                  const label_counts &labels) {
  for (int i = 0; i < n; i++)
    g->vertices.push_back(vertex_label(chance, labels));
}

void add_random_edge(plain_graph *g, dice *chance, const label_counts &labels) {
  const int n = static_cast<int>(g->vertices.size());
  if (n < 2)
    return;
  const int u = chance->below(n);
  const int w = (u + chance->between(1, n - 1)) % n;
  if (!has_edge(*g, u, w))
    g->edges.push_back({u, w, edge_label(chance, labels)});
}

plain_graph sparse(int edges, dice *chance, const label_counts &labels) {
  plain_graph g;
  add_vertices(&g, chance->between(2, edges + 2), chance, labels);
  for (int i = 0; i < edges; i++)
    add_random_edge(&g, chance, labels);
  return g;
}

plain_graph tree(int edges, dice *chance, const label_counts &labels) {
  plain_graph g;
  add_vertices(&g, edges + 1, chance, labels);
  for (int i = 1; i <= edges; i++)
    g.edges.push_back({chance->below(i), i, edge_label(chance, labels)});
  return g;
}

// A ring on all vertices, with chords where edges are left.
plain_graph ring(int edges, dice *chance, const label_counts &labels) {
  plain_graph g;
  const int n = std::max(3, edges - chance->below(3));
  add_vertices(&g, n, chance, labels);
  for (int i = 0; i < n; i++)
    g.edges.push_back({i, (i + 1) % n, edge_label(chance, labels)});
  while (static_cast<int>(g.edges.size()) < edges && chance->below(8) != 0)
    add_random_edge(&g, chance, labels);
  return g;
}

// Everything joined with everything, or one side with the other.
plain_graph clique(int edges, dice *chance, const label_counts &labels) {
  plain_graph g;
  const int n = chance->between(3, 6);
  const bool two_sides = chance->one_in(2);
  add_vertices(&g, n, chance, labels);
  for (int u = 0; u < n; u++)
    for (int w = u + 1; w < n; w++)
      if ((!two_sides || (u + w) % 2 != 0) &&
          static_cast<int>(g.edges.size()) < edges)
        g.edges.push_back({u, w, edge_label(chance, labels)});
  return g;
}

plain_graph disconnected(int edges, dice *chance, const label_counts &labels) {
  plain_graph g = tree(edges / 2, chance, labels);
  const plain_graph other = ring(std::max(3, edges / 2), chance, labels);
  const int shift = static_cast<int>(g.vertices.size());
  for (const std::string &label : other.vertices)
    g.vertices.push_back(label);
  for (const plain_edge &edge : other.edges)
    g.edges.push_back({edge.from + shift, edge.to + shift, edge.label});
  return g;
}

plain_graph fresh(int max_edges, dice *chance, const label_counts &labels) {
  const int edges = chance->between(1, max_edges);
  switch (chance->below(9)) {
  case 0:
  case 1:
  case 2:
    return sparse(chance->one_in(6) ? 0 : edges, chance, labels);
  case 3:
  case 4:
    return tree(edges, chance, labels);
  case 5:
  case 6:
    return ring(edges, chance, labels);
  case 7:
    return clique(edges, chance, labels);
  default:
    return disconnected(edges, chance, labels);
  }
}

// g with its vertices in another order.
plain_graph shuffled(const plain_graph &g, dice *chance) {
  const int n = static_cast<int>(g.vertices.size());
  std::vector<int> place(g.vertices.size());
  for (int i = 0; i < n; i++) {
    const int j = chance->below(i + 1);
    place[static_cast<size_t>(i)] = place[static_cast<size_t>(j)];
    place[static_cast<size_t>(j)] = i;
  }
  plain_graph out = g;
  for (size_t i = 0; i < place.size(); i++)
    out.vertices[static_cast<size_t>(place[i])] = g.vertices[i];
  for (plain_edge &edge : out.edges) {
    edge.from = place[static_cast<size_t>(edge.from)];
    edge.to = place[static_cast<size_t>(edge.to)];
  }
  return out;
}

plain_graph variation(const plain_graph &g, int max_edges, dice *chance,
                      const label_counts &labels) {
  plain_graph out = shuffled(g, chance);
  for (int changes = chance->below(3); changes > 0; changes--) {
    const int edges = static_cast<int>(out.edges.size());
    const int kind = chance->below(3);
    if (kind == 0 && edges < max_edges)
      add_random_edge(&out, chance, labels);
    else if (kind == 1 && edges > 0)
      out.edges.erase(out.edges.begin() + chance->below(edges));
    else if (kind == 2 && edges > 0)
      out.edges[static_cast<size_t>(chance->below(edges))].label =
          edge_label(chance, labels);
  }
  return out;
}

} // namespace

std::vector<plain_graph> random_database(dice *chance, int max_edges) {
  label_counts labels{};
  labels.vertex = chance->between(1, 3);
  labels.edge = chance->between(1, 3);
  const int transactions = chance->between(3, 12);
  std::vector<plain_graph> database;
  for (int i = 0; i < transactions; i++) {
    plain_graph g =
        i > 0 && chance->one_in(2)
            ? variation(database[static_cast<size_t>(chance->below(i))],
                        max_edges, chance, labels)
            : fresh(max_edges, chance, labels);
    if (static_cast<int>(g.edges.size()) > max_edges)
      g.edges.resize(static_cast<size_t>(max_edges));
    database.push_back(g);
  }
  return database;
}

text_style random_style(dice *chance) {
  text_style style{false, false, false, false};
  if (chance->one_in(4)) {
    style.odd_ids = chance->one_in(2);
    style.edges_first = chance->one_in(2);
    style.comments = chance->one_in(2);
    style.mixed_kinds = chance->one_in(2);
  }
  return style;
}

static std::string vertex_lines(const plain_graph &g, const text_style &style) {
  const int n = static_cast<int>(g.vertices.size());
  std::string text;
  for (int i = 0; i < n; i++) {
    text += style.mixed_kinds && i % 2 != 0 ? "  V " : "v ";
    text += std::to_string(style.odd_ids ? 7 * (n - i) - 9 : i) + ' ' +
            g.vertices[static_cast<size_t>(i)] + '\n';
    if (style.comments && i % 3 == 0)
      text += "# t v u\n";
  }
  return text;
}

static std::string edge_lines(const plain_graph &g, const text_style &style) {
  static const char *const kinds[] = {"u ", "E ", " d ", "e ", "D "};
  const int n = static_cast<int>(g.vertices.size());
  std::string text;
  for (size_t i = 0; i < g.edges.size(); i++) {
    int from = g.edges[i].from, to = g.edges[i].to;
    if (style.mixed_kinds && i % 2 != 0)
      std::swap(from, to);
    if (style.odd_ids) {
      from = 7 * (n - from) - 9;
      to = 7 * (n - to) - 9;
    }
    text += style.mixed_kinds ? kinds[i % 5] : kinds[0];
    text += std::to_string(from) + ' ' + std::to_string(to) + ' ' +
            g.edges[i].label + '\n';
  }
  return text;
}

std::string database_text(const std::vector<plain_graph> &database,
                          const text_style &style) {
  std::string text = style.comments ? "% random\n" : "";
  for (size_t i = 0; i < database.size(); i++) {
    text += style.mixed_kinds && i % 2 != 0 ? "T\n"
                                            : "t # " + std::to_string(i) + '\n';
    const std::string vertices = vertex_lines(database[i], style);
    const std::string edges = edge_lines(database[i], style);
    text += style.edges_first ? edges + vertices : vertices + edges;
  }
  return text;
}

static void drop_vertex(plain_graph *g, int u) {
  g->vertices.erase(g->vertices.begin() + u);
  std::vector<plain_edge> rest;
  for (plain_edge edge : g->edges) {
    if (edge.from == u || edge.to == u)
      continue;
    edge.from -= edge.from > u;
    edge.to -= edge.to > u;
    rest.push_back(edge);
  }
  g->edges = rest;
}

// One smaller database after the other: without transaction i, without its
// j-th edge, without its j-th vertex.  False when there are no more.
static bool next_smaller(const std::vector<plain_graph> &database, size_t step,
                         std::vector<plain_graph> *smaller) {
  *smaller = database;
  if (step < database.size()) {
    smaller->erase(smaller->begin() + static_cast<ptrdiff_t>(step));
    return true;
  }
  step -= database.size();
  for (plain_graph &g : *smaller) {
    if (step < g.edges.size()) {
      g.edges.erase(g.edges.begin() + static_cast<ptrdiff_t>(step));
      return true;
    }
    step -= g.edges.size();
  }
  for (plain_graph &g : *smaller) {
    if (step < g.vertices.size()) {
      drop_vertex(&g, static_cast<int>(step));
      return true;
    }
    step -= g.vertices.size();
  }
  return false;
}

std::vector<plain_graph> shrink_database(std::vector<plain_graph> database,
                                         const database_test &fails) {
  std::vector<plain_graph> smaller;
  for (size_t step = 0; next_smaller(database, step, &smaller);) {
    if (!smaller.empty() && fails(smaller)) {
      database = smaller;
      step = 0;
    } else {
      step++;
    }
  }
  return database;
}

} // namespace kestro
