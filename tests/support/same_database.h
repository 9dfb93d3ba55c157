// Databases compared graph by graph.
#pragma once

#include <string>

#include <kestro/database.h>

#include "library/access.h"
#include "support/graphs.h"

namespace kestro {

// What differs between the labels of two databases or between their graphs,
// down to the order of neighbours and the ids; "" when nothing does.
inline std::string difference(const database &a, const database &b) {
  const labels &left = a.label_set();
  const labels &right = b.label_set();
  if (left.vertex_labels() != right.vertex_labels() ||
      left.edge_labels() != right.edge_labels())
    return "numbers of labels";
  for (int i = 0; i < left.vertex_labels(); i++)
    if (left.vertex_label(i) != right.vertex_label(i))
      return "vertex label " + std::to_string(i);
  for (int i = 0; i < left.edge_labels(); i++)
    if (left.edge_label(i) != right.edge_label(i))
      return "edge label " + std::to_string(i);
  if (a.size() != b.size())
    return "numbers of graphs";
  for (int tid = 0; tid < a.size(); tid++) {
    const graph *g = access::graph_of(a[tid]);
    const graph *h = access::graph_of(b[tid]);
    if (!same_structure(g, h) || !std::equal(g->vid, g->vid + g->vs, h->vid))
      return "graph " + std::to_string(tid);
  }
  return "";
}

} // namespace kestro
