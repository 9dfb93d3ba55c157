// Components and edge-filtered remainders as new graphs.
//
// Vertices and slots keep their relative order, so the results are sorted as
// their origin is.  Each operation is one pass over the graph, plus one to size
// what it makes.

#include "reference/graph/parts.h"

#include <algorithm>

#include "base/error.h"
#include "base/xmalloc.h"
#include "graph/connectivity.h"
#include "graph/graph_list.h"
#include "reference/graph/connectivity.h"

namespace kestro {

// Copies vertex i of g as vertex u of part, whose first u vertices hold es
// slots; kept tells whether a slot is taken, renumber gives neighbours their
// new indices.  Returns the slot count with u.
template <class Kept>
static int copy_vertex(const graph *g, int i, graph *part, int u, int es,
                       const int *renumber, Kept kept) {
  part->v[u] = es;
  part->vid[u] = g->vid ? g->vid[i] : i;
  part->vlabel[u] = g->vlabel[i];
  for (int j = g->v[i]; j < g->v[i + 1]; j++) {
    if (!kept(j))
      continue;
    part->e[es] = renumber[g->e[j]];
    part->elabel[es] = g->elabel[j];
    es++;
  }
  part->v[u + 1] = es;
  return es;
}

graph_list *split_components(const graph *g, int c, const int *comp) {
  const size_t parts = static_cast<size_t>(c);
  xvector<int> c_vs(parts, 0);
  xvector<int> c_es(parts, 0);
  xvector<int> index(static_cast<size_t>(g->vs)); // within its component
  for (int i = 0; i < g->vs; i++) {
    const size_t t = static_cast<size_t>(comp[i]);
    index[static_cast<size_t>(i)] = c_vs[t]++;
    c_es[t] += g->v[i + 1] - g->v[i];
  }
  for (size_t i = 0; i < parts; i++)
    assert(c_vs[i] > 0);

  xvector<graph_ptr> made(parts);
  for (size_t t = 0; t < parts; t++)
    made[t].reset(graph_create(c_es[t], c_vs[t]));
  std::fill(c_es.begin(), c_es.end(), 0); // from here on: slots filled
  for (int i = 0; i < g->vs; i++) {
    const size_t t = static_cast<size_t>(comp[i]);
    c_es[t] = copy_vertex(g, i, made[t].get(), index[static_cast<size_t>(i)],
                          c_es[t], index.data(), [](int) { return true; });
  }
  graph_list_ptr list(graph_list_new());
  for (graph_ptr &part : made)
    graph_list_push(std::move(part), list.get());
  return list.release();
}

// A kept slot whose other end kept nothing was renumbered to -1.
static void check_removal(const graph *newg) {
  for (int i = 0; i < newg->vs; i++) {
    if (newg->v[i] < 0 || newg->v[i] >= newg->es)
      die("graph.c", "wrong edge removal\n");
    for (int j = newg->v[i]; j < newg->v[i + 1]; j++)
      if (newg->e[j] < 0 || newg->e[j] >= newg->vs)
        die("graph.c", "wrong edge removal\n");
  }
  assert(newg->v[newg->vs] == newg->es);
}

graph *graph_remove_edges(const graph *g, const int *keep) {
  int es = 0;
  int vs = 0;
  xvector<int> index(static_cast<size_t>(g->vs), -1); // -1: nothing kept
  for (int i = 0; i < g->vs; i++) {
    const int *first = keep + g->v[i];
    const int *last = keep + g->v[i + 1];
    const auto kept = (last - first) - std::count(first, last, 0);
    es += static_cast<int>(kept);
    if (kept)
      index[static_cast<size_t>(i)] = vs++;
  }
  if (!es) {
    assert(!vs);
    return nullptr;
  }
  graph_ptr newg(graph_create(es, vs));
  int filled = 0;
  for (int i = 0; i < g->vs; i++)
    if (index[static_cast<size_t>(i)] != -1)
      filled =
          copy_vertex(g, i, newg.get(), index[static_cast<size_t>(i)], filled,
                      index.data(), [keep](int j) { return keep[j] != 0; });
  check_removal(newg.get());
  return newg.release();
}

// Moves the graphs of list out of it, leaving it empty.
static xvector<graph_ptr> take_graphs(graph_list *list) {
  xvector<graph_ptr> graphs(static_cast<size_t>(list->count));
  for (size_t i = 0; i < graphs.size(); i++)
    graphs[i].reset(graph_list_at(list, static_cast<int>(i)));
  list->count = 0;
  return graphs;
}

void graph_filter_by_slots(graph_list *list, const int *const *keep) {
  xvector<graph_ptr> graphs = take_graphs(list);
  for (size_t i = 0; i < graphs.size(); i++) {
    const int *first = keep[i];
    const int *last = first + graphs[i]->es;
    if (std::find(first, last, 0) != last)
      graphs[i].reset(graph_remove_edges(graphs[i].get(), first));
    if (graphs[i] && graphs[i]->es > 0)
      graph_list_push(std::move(graphs[i]), list);
  }
}

void graph_split_all(graph_list *list) {
  for (graph_ptr &g : take_graphs(list)) {
    if (g->vs == 0)
      continue;
    xvector<int> comp(static_cast<size_t>(g->vs));
    const int c = graph_connected_components(g.get(), comp.data());
    graph_list_ptr components(split_components(g.get(), c, comp.data()));
    for (graph_ptr &part : take_graphs(components.get()))
      if (part->vs > 1)
        graph_list_push(std::move(part), list);
  }
}

} // namespace kestro
