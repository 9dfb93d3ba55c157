// The three ways of joining.
//
// Each copies g2 in one pass and lets the new slots in at their sorted places,
// so the result needs no sorting.  It is written into memory the caller reuses;
// nothing is allocated.

#include "reference/graph/merge.h"

#include <cstring>

#include "base/error.h"

namespace kestro {

namespace {

// Appends to a graph's slots, vertex by vertex.
struct slot_writer {
  graph *g;
  int count; // slots written

  void begin(int vertex, int vlabel, int vid) {
    g->v[vertex] = count;
    g->vlabel[vertex] = vlabel;
    g->vid[vertex] = vid;
  }
  void slot(int neighbour, int label) {
    g->e[count] = neighbour;
    g->elabel[count] = label;
    count++;
  }
};

} // namespace

// The first disabled slot of a range that ends at end; end when there is none.
static int first_disabled(const graph *g1, int u, int end) {
  int i = graph_unmark(g1->v[u]);
  while (i < end && !graph_is_disabled(g1->e[i]))
    i++;
  return i;
}

// The label of the first disabled slot of vertex u, which must have one.
static int disabled_label(const graph *g1, int u) {
  const int end = graph_unmark(g1->v[u + 1]);
  const int i = first_disabled(g1, u, end);
  assert(i < end);
  return g1->elabel[i];
}

// Copies vertex i of g2 with the slot (neighbour, label) let in before the
// first larger neighbour.
static void copy_vertex_with(const graph *g2, int i, int neighbour, int label,
                             slot_writer *out) {
  bool inserted = false;
  for (int j = g2->v[i]; j < g2->v[i + 1]; j++) {
    if (!inserted && g2->e[j] > neighbour) {
      out->slot(neighbour, label);
      inserted = true;
    }
    out->slot(g2->e[j], g2->elabel[j]);
  }
  if (!inserted)
    out->slot(neighbour, label);
}

static void copy_vertex(const graph *g2, int i, slot_writer *out) {
  for (int j = g2->v[i]; j < g2->v[i + 1]; j++)
    out->slot(g2->e[j], g2->elabel[j]);
}

// Whether the new slots of an edge's ends are still missing.
struct missing_slots {
  bool p = true;
  bool q = true;
};

// result = g2 plus the edge p-q.  A slot stays missing if its end is no vertex
// of g2.
static missing_slots add_edge(const graph *g2, int p, int q, int label,
                              graph *result) {
  missing_slots missing;
  slot_writer out = {result, 0};
  for (int i = 0; i < g2->vs; i++) {
    out.begin(i, g2->vlabel[i], g2->vid ? g2->vid[i] : i);
    if (i == p) {
      copy_vertex_with(g2, i, q, label, &out);
      missing.p = false;
    } else if (i == q) {
      copy_vertex_with(g2, i, p, label, &out);
      missing.q = false;
    } else {
      copy_vertex(g2, i, &out);
    }
  }
  result->v[g2->vs] = out.count;
  return missing;
}

static int first_unmapped(const graph *g1, const int *map) {
  int x = 0;
  while (x < g1->vs && map[x] != -1)
    x++;
  return x < g1->vs ? x : -1;
}

int graph_merge(const graph *g1, const graph *g2, int u, int w, const int *map,
                graph *result) {
  if (g1->es != g2->es)
    die("graph.c", "something wrong\n");
  const int x = first_unmapped(g1, map);
  result->es = g2->es + 2;
  if (x == -1) {
    result->vs = g2->vs;
    return merge_graphs2(g1, g2, map, u, w, result);
  }
  if (x != u && x != w)
    die("graph.c", "something wrong\n");
  result->vs = g2->vs + 1;
  merge_graphs1(g1, g2, map, x, x == u ? w : u, result);
  return 1;
}

void merge_graphs1(const graph *g1, const graph *g2, const int *map, int x,
                   int y, graph *result) {
  const int end = graph_unmark(g1->v[y + 1]);
  const int slot = first_disabled(g1, y, end);
  const int el = slot < end ? g1->elabel[slot] : -1;
  assert(el != -1);
  const int p = map[y];
  const int n = g2->vs;
  slot_writer out = {result, 0};
  for (int i = 0; i < g2->vs; i++) {
    out.begin(i, g2->vlabel[i], g2->vid ? g2->vid[i] : i);
    copy_vertex(g2, i, &out);
    if (i == p)
      out.slot(n, el);
  }
  out.begin(n, g1->vlabel[x], n);
  out.slot(p, el);
  result->v[n + 1] = out.count;
  KESTRO_STRUCTURE(graph_check(result));
}

int merge_graphs2(const graph *g1, const graph *g2, const int *map, int u,
                  int w, graph *result) {
  const int el = disabled_label(g1, u);
  if (graph_has_edge(g2, map[u], map[w]))
    return 0;
  const auto [flag_p, flag_q] = add_edge(g2, map[u], map[w], el, result);
  assert(!flag_p && !flag_q);
  KESTRO_STRUCTURE(graph_check(result));
  return 1;
}

// The smallest vertex of g2 that is the image of no vertex of g1, or -1.
static int first_without_origin(const graph *g1, const graph *g2,
                                const int *map) {
  for (int z = 0; z < g2->vs; z++) {
    int i = 0;
    while (i < g1->vs && map[i] != z)
      i++;
    if (i == g1->vs)
      return z;
  }
  return -1;
}

static void require_leaf(const graph *g2, int w) {
  assert(graph_vertex_degree(g2, w) == 1);
  if (g2->v[w + 1] - g2->v[w] > 1)
    die("graph.c", "something wrong\n");
}

int graph_merge_with_loop(const graph *g1, const graph *g2, int u, int w,
                          const int *map, graph *result) {
  if (g1->es != g2->es)
    die("graph.c", "size mismatch\n");
  if (first_unmapped(g1, map) == -1)
    return 0;
  const int x = map[w] == -1 ? w : u;
  const int y = x == w ? u : w;
  const int p = map[y];
  const int z = first_without_origin(g1, g2, map);
  if (z == -1)
    return 0;
  require_leaf(g2, z);
  if (g2->e[g2->v[z]] == p || g2->vlabel[z] != g1->vlabel[x])
    return 0;
  const int el = disabled_label(g1, y);
  result->es = g2->es + 2;
  result->vs = g2->vs;
  const auto [flag_w, flag_q] = add_edge(g2, z, p, el, result);
  assert(!flag_q && !flag_w);
  KESTRO_STRUCTURE(graph_check(result));
  return 1;
}

void graph_get_mapped_edges(const graph *g1, const graph *g2, const int *map,
                            int *slots) {
  int es = 0;
  for (int i = 0; i < g1->vs; i++) {
    const int u = map[i];
    for (int j = g1->v[i]; j < g1->v[i + 1]; j++) {
      int k = g2->v[u];
      while (k < g2->v[u + 1] && g2->e[k] != map[g1->e[j]])
        k++;
      assert(k < g2->v[u + 1]);
      slots[es++] = k;
    }
  }
  assert(es == g1->es);
}

} // namespace kestro
