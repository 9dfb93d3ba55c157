// Inputs of the benchmarks.
//
// Draws come straight from the generator's 32 bits, since the library's
// distributions differ from one implementation to the next.  Graphs that are
// compared by time must also be the same graphs, so nothing here depends on
// the clock, the environment or addresses.

#include "micro/inputs.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <tuple>
#include <unistd.h>

#include "base/error.h"
#include "graph/transactions.h"
#include "mining/candidates.h"
#include "mining/first_levels.h"
#include "mining/support.h"

namespace kestro {

int draw_below(generator &draw, int n) {
  return static_cast<int>(uint64_t{draw()} * static_cast<uint64_t>(n) >> 32);
}

static int count_vertices(const sketch &s) {
  return static_cast<int>(s.vlabels.size());
}

static bool has_edge(const sketch &s, int u, int v) {
  return std::any_of(s.edges.begin(), s.edges.end(), [&](const auto &edge) {
    return (edge.u == u && edge.v == v) || (edge.u == v && edge.v == u);
  });
}

static int degree(const sketch &s, int u) {
  return static_cast<int>(
      std::count_if(s.edges.begin(), s.edges.end(), [&](const auto &edge) {
        return edge.u == u || edge.v == u;
      }));
}

// One of 0..n-1: 0 three times in four, 1 in three quarters of the rest, ...
static int draw_label(generator &draw, int n) {
  int label = 0;
  while (label < n - 1 && draw_below(draw, 4) == 0)
    label++;
  return label;
}

sketch draw_molecule(generator &draw, int vertices) {
  sketch s;
  s.vlabels.push_back(draw_label(draw, 6));
  while (count_vertices(s) < vertices) {
    const int last = count_vertices(s) - 1;
    const int back = last - 4 - draw_below(draw, 2);
    if (back >= 0 && draw_below(draw, 6) == 0 && degree(s, back) < 4 &&
        degree(s, last) < 4 && !has_edge(s, back, last))
      s.edges.push_back({back, last, draw_label(draw, 3)});
    const int end = std::max(0, last - draw_below(draw, 3));
    if (degree(s, end) == 4)
      continue;
    s.vlabels.push_back(draw_label(draw, 6));
    s.edges.push_back({end, last + 1, draw_label(draw, 3)});
  }
  return s;
}

static sketch make_unlabelled(int vertices) {
  sketch s;
  s.vlabels.assign(static_cast<size_t>(vertices), 0);
  return s;
}

sketch draw_tree(generator &draw, int vertices) {
  sketch s = make_unlabelled(vertices);
  for (int v = 1; v < vertices; v++)
    s.edges.push_back({draw_below(draw, v), v, 0});
  return s;
}

sketch make_ring(int vertices) {
  sketch s = make_unlabelled(vertices);
  for (int v = 0; v < vertices; v++)
    s.edges.push_back({v, (v + 1) % vertices, 0});
  return s;
}

sketch make_hypercube(int dimension) {
  const int vertices = 1 << dimension;
  sketch s = make_unlabelled(vertices);
  for (int u = 0; u < vertices; u++)
    for (int bit = 1; bit < vertices; bit *= 2)
      if ((u & bit) == 0)
        s.edges.push_back({u, u | bit, 0});
  return s;
}

sketch make_complete(int vertices) {
  sketch s = make_unlabelled(vertices);
  for (int u = 0; u < vertices; u++)
    for (int v = u + 1; v < vertices; v++)
      s.edges.push_back({u, v, 0});
  return s;
}

sketch make_star(int leaves) { return make_bipartite(1, leaves); }

sketch make_bipartite(int left, int right) {
  sketch s = make_unlabelled(left + right);
  for (int u = 0; u < left; u++)
    for (int v = 0; v < right; v++)
      s.edges.push_back({u, left + v, 0});
  return s;
}

sketch make_grid(int rows, int columns) {
  sketch s = make_unlabelled(rows * columns);
  for (int u = 0; u < rows * columns; u++) {
    if (u % columns != columns - 1)
      s.edges.push_back({u, u + 1, 0});
    if (u / columns != rows - 1)
      s.edges.push_back({u, u + columns, 0});
  }
  return s;
}

sketch make_hubs(int hubs, int leaves) {
  sketch s = make_unlabelled(hubs * (1 + leaves));
  for (int hub = 0; hub < hubs; hub++) {
    s.vlabels[static_cast<size_t>(hub)] = 1 + hub;
    if (hub > 0)
      s.edges.push_back({hub - 1, hub, 0});
    for (int i = 0; i < leaves; i++)
      s.edges.push_back({hub, hubs + hub * leaves + i, 0});
  }
  return s;
}

// Positions 0..n-1 in a drawn order.
static xvector<int> draw_order(generator &draw, int n) {
  xvector<int> order(static_cast<size_t>(n));
  for (int i = 0; i < n; i++) {
    const int j = draw_below(draw, i + 1);
    order[static_cast<size_t>(i)] = order[static_cast<size_t>(j)];
    order[static_cast<size_t>(j)] = i;
  }
  return order;
}

graph_ptr lay_out(const sketch &s, generator &draw) {
  const int vs = count_vertices(s);
  const xvector<int> position = draw_order(draw, vs);
  xvector<sketch::edge> slots;
  for (const sketch::edge &edge : s.edges) {
    const int u = position[static_cast<size_t>(edge.u)];
    const int v = position[static_cast<size_t>(edge.v)];
    slots.push_back({u, v, edge.label});
    slots.push_back({v, u, edge.label});
  }
  std::sort(slots.begin(), slots.end(), [](const auto &a, const auto &b) {
    return std::tie(a.u, a.v) < std::tie(b.u, b.v);
  });
  const int es = static_cast<int>(slots.size());
  graph_ptr g(graph_create(es, vs));
  for (int i = 0; i < vs; i++) {
    g->vid[i] = i;
    g->vlabel[position[static_cast<size_t>(i)]] =
        s.vlabels[static_cast<size_t>(i)];
  }
  std::fill(g->v, g->v + vs + 1, 0);
  for (int j = 0; j < es; j++) {
    const sketch::edge &slot = slots[static_cast<size_t>(j)];
    g->e[j] = slot.v;
    g->elabel[j] = slot.label;
    g->v[slot.u + 1] = j + 1;
  }
  return g;
}

static void write_transaction(const sketch &s, int tid, FILE *out) {
  std::fprintf(out, "t # %d\n", tid);
  for (int v = 0; v < count_vertices(s); v++)
    std::fprintf(out, "v %d %d\n", v, s.vlabels[static_cast<size_t>(v)]);
  for (const sketch::edge &edge : s.edges)
    std::fprintf(out, "u %d %d %d\n", edge.u, edge.v, edge.label);
}

// The name of a new file of 500 molecules of 15 to 35 vertices.
static std::string write_molecules() {
  char name[] = "/tmp/kestro_bench_XXXXXX";
  const int descriptor = mkstemp(name);
  FILE *out = descriptor == -1 ? nullptr : fdopen(descriptor, "w");
  if (!out)
    die("inputs.cpp", "can't open a file '%s'\n", name);
  generator draw(1);
  for (int tid = 0; tid < 500; tid++)
    write_transaction(draw_molecule(draw, 15 + draw_below(draw, 21)), tid, out);
  if (std::fclose(out) != 0)
    die("inputs.cpp", "can't write a file '%s'\n", name);
  return name;
}

loaded_file::loaded_file(const std::string &name)
    : file_(name.empty() ? write_molecules() : name), drawn_(name.empty()),
      labels_(label_set_create()) {
  const file_text text = read_file(file_.c_str());
  label_set_build(text, labels_.get());
  transactions_.reset(graph_read_transactions(text, labels_.get()));
}

loaded_file::~loaded_file() {
  if (drawn_)
    std::remove(file_.c_str());
}

search_levels mine_until(const loaded_file &db, int k) {
  const graph_list *transactions = db.transactions();
  const int minsup = std::max(1, transactions->count / 10);
  const int edge_labels = label_set_edge_labels(db.labels());
  const int vertex_labels = label_set_vertex_labels(db.labels());
  search_levels levels;
  levels.cores.reset(
      sg_frequent_edges(transactions, minsup, edge_labels, vertex_labels));
  levels.children.reset(sg_frequent_double_edges(
      levels.cores.get(), transactions, minsup, edge_labels, vertex_labels));
  for (int size = 3; sg_set_size(levels.children.get()) > 0; size++) {
    levels.candidates =
        sg_generate_candidates(levels.children.get(), levels.cores.get())
            .candidates;
    if (size == k)
      break;
    sg_filter_candidates_by_support(
        levels.candidates.get(), levels.children.get(), transactions, minsup);
    levels.cores = std::move(levels.children);
    support_counter(transactions, 1)
        .count_all(levels.candidates.get(), levels.cores.get(), minsup);
    levels.children = std::move(levels.candidates);
  }
  if (!levels.candidates || sg_set_size(levels.candidates.get()) == 0)
    die("inputs.cpp", "the database has no candidates of size %d\n", k);
  return levels;
}

} // namespace kestro
