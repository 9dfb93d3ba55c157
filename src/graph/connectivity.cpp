// Breadth-first order.

#include "graph/connectivity.h"

#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

int graph_bfs_order(const graph *g, int *order) {
  xvector<char> seen(static_cast<size_t>(g->vs), 0);
  int queued = 0;
  const auto append = [&](int u) {
    if (queued >= g->vs)
      panic("graph.c", "something wrong\n");
    seen[static_cast<size_t>(u)] = 1;
    order[queued++] = u;
  };
  if (g->vs > 0)
    append(0);
  for (int head = 0; head < queued; head++) {
    const int u = order[head];
    for (int j = g->v[u]; j < g->v[u + 1]; j++)
      if (!seen[static_cast<size_t>(g->e[j])])
        append(g->e[j]);
  }
  return queued;
}

} // namespace kestro
