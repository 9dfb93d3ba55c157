// The backtracking isomorphism engine.
//
// Vertices of g1 are mapped one at a time onto vertices of g2 in ascending
// number.  Cheap tests come first: a free image, equal labels, enough
// neighbours, and at least as many used neighbours as u has mapped ones; only
// then are the edges to mapped vertices looked up, one read each in the label
// matrix.  Between two steps the neighbour counts agree with map and used.
//
// Searches for one mapping cut two kinds of branches that hold none, or none
// that comes first; otherwise a hub with many like leaves would cost the
// factorial of their number.  Twins, leaves of one vertex with equal labels,
// are mapped in ascending order; and a vertex is mapped only where enough free
// neighbours remain for its own unmapped ones.

#include "cl/isomorphism.h"

#include <algorithm>

#include "base/error.h"

namespace kestro {

static thread_local isomorphism_counters counters;

isomorphism_counters graph_isomorphism_counters() { return counters; }

// Adds delta to the counts of the neighbours of u.
static void add_to_neighbours(const graph *g, int u, int delta, int *counts) {
  const int end = graph_unmark(g->v[u + 1]);
  for (int j = graph_unmark(g->v[u]); j < end; j++)
    if (!graph_is_disabled(g->e[j]))
      counts[g->e[j]] += delta;
}

// The slot of a leaf that is free to be mapped, -1 for any other vertex.
static int free_leaf_slot(const isomorphism_work *work, int u) {
  const graph *g = work->g1;
  if (work->active[u] || graph_vertex_degree(g, u) != 1)
    return -1;
  int j = g->v[u];
  while (graph_is_disabled(g->e[j]))
    j++;
  return j;
}

// The first leaf of u's only neighbour that has u's labels; u itself if it is
// no free leaf or the first of its kind.
static int first_twin(const isomorphism_work *work, int u) {
  const graph *g = work->g1;
  const int slot = free_leaf_slot(work, u);
  if (slot == -1)
    return u;
  const int hub = g->e[slot];
  const int end = graph_unmark(g->v[hub + 1]);
  for (int j = graph_unmark(g->v[hub]); j < end && g->e[j] != u; j++) {
    const int x = g->e[j];
    if (!graph_is_disabled(x) && g->elabel[j] == g->elabel[slot] &&
        g->vlabel[x] == g->vlabel[u] && free_leaf_slot(work, x) != -1)
      return x;
  }
  return u;
}

static void write_label_matrix(const graph *g, int **label_matrix) {
  for (int w = 0; w < g->vs; w++)
    for (int j = g->v[w]; j < g->v[w + 1]; j++)
      label_matrix[w][g->e[j]] = g->elabel[j];
}

isomorphism_start setup_isomorphism_work_area(const isomorphism_work *work) {
  const int vs = work->g1->vs;
  std::fill_n(work->mapped_nbrs1, vs, 0);
  std::fill_n(work->mapped_nbrs2, work->g2->vs, 0);
  std::fill_n(work->used, work->g2->vs, 0);
  isomorphism_start start = {0, -1};
  for (int i = 0; i < vs; i++) {
    int *const map = work->map;
    if (work->active[i]) {
      KESTRO_CHECK(map[i] != -1);
      isomorphism_map_vertex(work, i, map[i]);
      start.depth++;
      continue;
    }
    map[i] = -1;
    if (start.vertex == -1)
      start.vertex = i;
  }
  for (int i = 0; i < vs; i++)
    work->twins[i] = first_twin(work, i);
  std::fill_n(work->last_twin, vs, -1);
  write_label_matrix(work->g2, work->label_matrix);
  return start;
}

int graph_check_edges_by_matrix(const isomorphism_work *work, int u, int w) {
  counters.edge_checks++;
  const graph *g = work->g1;
  const int *labels = work->label_matrix[w];
  const int end = graph_unmark(g->v[u + 1]);
  for (int j = graph_unmark(g->v[u]); j < end; j++) {
    if (graph_is_disabled(g->e[j]))
      continue;
    const int image = work->map[g->e[j]];
    if (image != -1 && labels[image] != g->elabel[j])
      return 0;
  }
  return 1;
}

int graph_check_edges_by_lists(const graph *g1, const graph *g2, const int *map,
                               int u, int w) {
  counters.edge_checks++;
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

bool isomorphism_candidate(const isomorphism_work *work, int u, int degree,
                           int w, int depth) {
  const graph *g2 = work->g2;
  return !work->used[w] && work->g1->vlabel[u] == g2->vlabel[w] &&
         g2->v[w + 1] - g2->v[w] >= degree &&
         work->mapped_nbrs1[u] <= work->mapped_nbrs2[w] &&
         (depth == 0 || graph_check_edges_by_matrix(work, u, w));
}

// How many unmapped neighbours of u have the labels of its slot j.
static int wanted_neighbours(const isomorphism_work *work, int u, int j) {
  const graph *g = work->g1;
  int wanted = 0;
  const int end = graph_unmark(g->v[u + 1]);
  for (int k = graph_unmark(g->v[u]); k < end; k++)
    wanted += !graph_is_disabled(g->e[k]) && work->map[g->e[k]] == -1 &&
              g->elabel[k] == g->elabel[j] &&
              g->vlabel[g->e[k]] == g->vlabel[g->e[j]];
  return wanted;
}

// Whether w has free neighbours enough, by labels, for u's unmapped ones.
static bool has_room(const isomorphism_work *work, int u, int w) {
  const graph *g1 = work->g1;
  const graph *g2 = work->g2;
  const int end = graph_unmark(g1->v[u + 1]);
  for (int j = graph_unmark(g1->v[u]); j < end; j++) {
    const int x = g1->e[j];
    if (graph_is_disabled(x) || work->map[x] != -1)
      continue;
    int missing = wanted_neighbours(work, u, j);
    for (int k = g2->v[w]; k < g2->v[w + 1] && missing > 0; k++)
      missing -= !work->used[g2->e[k]] && g2->elabel[k] == g1->elabel[j] &&
                 g2->vlabel[g2->e[k]] == g1->vlabel[x];
    if (missing > 0)
      return false;
  }
  return true;
}

void isomorphism_map_vertex(const isomorphism_work *work, int u, int w) {
  work->map[u] = w;
  work->used[w] = 1;
  add_to_neighbours(work->g1, u, 1, work->mapped_nbrs1);
  add_to_neighbours(work->g2, w, 1, work->mapped_nbrs2);
}

void isomorphism_unmap_vertex(const isomorphism_work *work, int u) {
  const int w = work->map[u];
  add_to_neighbours(work->g1, u, -1, work->mapped_nbrs1);
  add_to_neighbours(work->g2, w, -1, work->mapped_nbrs2);
  work->map[u] = -1;
  work->used[w] = 0;
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
  counters.searches++;
  const int degree = graph_vertex_degree(work->g1, u);
  int *const last_twin = &work->last_twin[work->twins[u]];
  const int last = *last_twin;
  for (int w = last + 1; w < work->g2->vs; w++) {
    if (!isomorphism_candidate(work, u, degree, w, depth) ||
        !has_room(work, u, w))
      continue;
    work->order[depth] = u;
    if (depth + 1 == work->g1->vs)
      return map_last_vertex(work, u, w);
    *last_twin = w;
    isomorphism_map_vertex(work, u, w);
    const int next_u = choose_next(work->g1, work->map);
    KESTRO_CHECK(next_u != -1);
    if (isomorphism_and_order(work, next_u, depth + 1))
      return 1;
    isomorphism_unmap_vertex(work, u);
  }
  *last_twin = last;
  return 0;
}

int isomorphism_by_order(const isomorphism_work *work, int depth) {
  counters.searches++;
  const int *map = work->map;
  for (; depth < work->g1->vs && work->active[work->order[depth]]; depth++) {
    const int u = work->order[depth];
    KESTRO_CHECK(map[u] != -1);
  }
  if (depth == work->g1->vs)
    return 1;
  const int u = work->order[depth];
  const int degree = graph_vertex_degree(work->g1, u);
  int *const last_twin = &work->last_twin[work->twins[u]];
  const int last = *last_twin;
  for (int w = last + 1; w < work->g2->vs; w++) {
    if (!isomorphism_candidate(work, u, degree, w, depth) ||
        !has_room(work, u, w))
      continue;
    if (depth + 1 == work->g1->vs)
      return map_last_vertex(work, u, w);
    *last_twin = w;
    isomorphism_map_vertex(work, u, w);
    if (isomorphism_by_order(work, depth + 1))
      return 1;
    isomorphism_unmap_vertex(work, u);
  }
  *last_twin = last;
  return 0;
}

void all_isomorphisms(const isomorphism_work *work, int depth, ksstack *maps) {
  counters.searches++;
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
