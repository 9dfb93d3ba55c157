// The backtracking isomorphism searches.
//
// Each tries the vertices of g2 in ascending number, so the mapping found is
// the first in lexicographic order along the order of g1's vertices.  A hub
// with many like leaves costs the factorial of their number where there is no
// mapping.

#include "reference/cl/isomorphism.h"

#include "base/error.h"

namespace kestro {

static thread_local uint64_t searches = 0;

uint64_t graph_isomorphism_searches() { return searches; }

int graph_check_edges_by_lists(const graph *g1, const graph *g2, const int *map,
                               int u, int w) {
  const int end = graph_unmark(g1->v[u + 1]);
  for (int j = graph_unmark(g1->v[u]); j < end; j++) {
    const int x = g1->e[j];
    if (graph_is_disabled(x) || map[x] == -1)
      continue;
    const int slot = graph_edge_index(g2, w, map[x]);
    if (slot == -1 || g1->vlabel[x] != g2->vlabel[map[x]] ||
        g1->elabel[j] != g2->elabel[slot])
      return 0;
  }
  return 1;
}

// The first unmapped neighbour of the lowest mapped vertex that has one.
static int choose_next(const graph *g, const int *map) {
  for (int x = 0; x < g->vs; x++) {
    if (map[x] == -1)
      continue;
    const int end = graph_unmark(g->v[x + 1]);
    for (int j = graph_unmark(g->v[x]); j < end; j++)
      if (!graph_is_disabled(g->e[j]) && map[g->e[j]] == -1)
        return g->e[j];
  }
  return -1;
}

// The last vertex completes the mapping; no step reads the counts any more.
static int map_last_vertex(const isomorphism_work *work, int u, int w) {
  work->map[u] = w;
  work->used[w] = 1;
  return 1;
}

int isomorphism_and_order(const isomorphism_work *work, int u, int depth) {
  searches++;
  const int degree = graph_vertex_degree(work->g1, u);
  for (int w = 0; w < work->g2->vs; w++) {
    if (!isomorphism_candidate(work, u, degree, w, depth))
      continue;
    work->order[depth] = u;
    if (depth + 1 == work->g1->vs)
      return map_last_vertex(work, u, w);
    isomorphism_map_vertex(work, u, w);
    const int next_u = choose_next(work->g1, work->map);
    KESTRO_CHECK(next_u != -1);
    if (isomorphism_and_order(work, next_u, depth + 1))
      return 1;
    isomorphism_unmap_vertex(work, u);
  }
  return 0;
}

int isomorphism_by_order(const isomorphism_work *work, int depth) {
  searches++;
  const int *map = work->map;
  for (; depth < work->g1->vs && work->active[work->order[depth]]; depth++) {
    const int u = work->order[depth];
    KESTRO_CHECK(map[u] != -1);
  }
  if (depth == work->g1->vs)
    return 1;
  const int u = work->order[depth];
  const int degree = graph_vertex_degree(work->g1, u);
  for (int w = 0; w < work->g2->vs; w++) {
    if (!isomorphism_candidate(work, u, degree, w, depth))
      continue;
    if (depth + 1 == work->g1->vs)
      return map_last_vertex(work, u, w);
    isomorphism_map_vertex(work, u, w);
    if (isomorphism_by_order(work, depth + 1))
      return 1;
    isomorphism_unmap_vertex(work, u);
  }
  return 0;
}

void all_isomorphisms(const isomorphism_work *work, int depth, ksstack *maps) {
  searches++;
  const int *map = work->map;
  const int *used = work->used;
  for (; depth < work->g1->vs && work->active[work->order[depth]]; depth++) {
    const int u = work->order[depth];
    KESTRO_CHECK(map[u] != -1);
    KESTRO_CHECK(used[map[u]]);
  }
  if (depth == work->g1->vs) {
    ksstack_push(map, maps);
    return;
  }
  const int u = work->order[depth];
  const int degree = graph_vertex_degree(work->g1, u);
  for (int w = 0; w < work->g2->vs; w++) {
    if (!isomorphism_candidate(work, u, degree, w, depth))
      continue;
    isomorphism_map_vertex(work, u, w);
    all_isomorphisms(work, depth + 1, maps);
    isomorphism_unmap_vertex(work, u);
  }
}

} // namespace kestro
