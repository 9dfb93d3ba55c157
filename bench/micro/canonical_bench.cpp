// Canonical labelling of single graphs.
//
// Each graph comes in 32 vertex orders taken in turn, since the cost depends
// on the order and mining meets any of them.  Molecules are settled by
// refinement; trees, rings and the other symmetric ones leave parts that only
// the search can order.  The families have up to 40! automorphisms, so a search
// that visits their images of one leaf does not end; how the cost grows within
// one is what bench/growth draws.

#include <benchmark/benchmark.h>

#include <string>

#include "cl/canonical.h"
#include "micro/benchmarks.h"
#include "reference/graph/graph.h"

namespace kestro {

static void canonicalize(benchmark::State &state, const sketch &s) {
  generator draw(1);
  xvector<graph_ptr> orders(32);
  for (graph_ptr &order : orders)
    order = lay_out(s, draw);
  graph_ptr work(graph_copy(orders[0].get()));
  labeller forms;
  size_t next = 0;
  for (auto _ : state) {
    graph_copy_into(orders[next++ % orders.size()].get(), work.get());
    benchmark::DoNotOptimize(forms.canonicalize(work.get()));
  }
  state.counters["vertices"] = static_cast<double>(s.vlabels.size());
  state.counters["edges"] = static_cast<double>(s.edges.size());
}

static void add(const std::string &shape, const std::string &size,
                const sketch &s) {
  const std::string name = "canonical/" + shape + "/" + size;
  benchmark::RegisterBenchmark(
      name.c_str(), [s](benchmark::State &state) { canonicalize(state, s); });
}

static void add(const std::string &shape, int size, const sketch &s) {
  add(shape, std::to_string(size), s);
}

static std::string format_sides(int a, int b) {
  return std::to_string(a) + "x" + std::to_string(b);
}

static void add_families() {
  for (int leaves = 4; leaves <= 40; leaves += 2)
    add("star", leaves, make_star(leaves));
  for (const int leaves : {3, 4})
    for (int hubs = 1; hubs <= 8; hubs++)
      add("hubs", format_sides(hubs, leaves), make_hubs(hubs, leaves));
  // Only with equal sides do all vertices look alike.
  for (int side = 1; side <= 6; side++)
    add("balanced", format_sides(side, side), make_bipartite(side, side));
  for (int left = 1; left <= 6; left++)
    for (int right = left + 1; right <= 6; right++)
      add("bipartite", format_sides(left, right), make_bipartite(left, right));
  for (int side = 2; side <= 12; side++)
    add("grid", format_sides(side, side), make_grid(side, side));
}

void register_canonical_benchmarks() {
  for (const int vertices : {5, 10, 20, 40}) {
    generator draw(static_cast<uint32_t>(vertices));
    add("molecule", vertices, draw_molecule(draw, vertices));
  }
  for (const int vertices : {5, 10, 15}) {
    generator draw(static_cast<uint32_t>(vertices));
    add("tree", vertices, draw_tree(draw, vertices));
  }
  for (const int vertices : {4, 6, 8, 12})
    add("ring", vertices, make_ring(vertices));
  for (const int vertices : {4, 5, 6})
    add("complete", vertices, make_complete(vertices));
  for (const int dimension : {2, 3})
    add("hypercube", dimension, make_hypercube(dimension));
  add_families();
}

} // namespace kestro
