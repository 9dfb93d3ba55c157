// Builds the graph of one edge with the installed library and shows that its
// key depends on the labels alone: equal for a copy, not for another label.

#include <cstdio>

#include "base/error.h"
#include "graph/graph.h"

using kestro::graph_ptr;

static graph_ptr edge_with_label(int label) {
  graph_ptr g(kestro::graph_create(2, 2));
  for (int i = 0; i < 2; i++) {
    g->e[i] = 1 - i;
    g->v[i] = i;
    g->vid[i] = i;
    g->elabel[i] = label;
    g->vlabel[i] = 0;
  }
  g->v[2] = 2;
  kestro::graph_check(g.get());
  return g;
}

int main() {
  const graph_ptr g = edge_with_label(0);
  const graph_ptr same(kestro::graph_create(g->es, g->vs));
  kestro::graph_copy_into(g.get(), same.get());
  const graph_ptr other = edge_with_label(1);
  const uint32_t key = kestro::graph_key(g.get());
  const bool equal = kestro::graph_key(same.get()) == key;
  const bool differs = kestro::graph_key(other.get()) != key;
  std::printf("equal %d, differs %d\n", equal, differs);
  return equal && differs ? 0 : 1;
}
