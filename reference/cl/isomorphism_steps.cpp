// The steps of isomorphism searches.
//
// Vertices of g1 are mapped one at a time onto vertices of g2 in ascending
// number.  Cheap tests come first: a free image, equal labels, enough
// neighbours, and at least as many used neighbours as u has mapped ones; only
// then are the edges to mapped vertices looked up, one read each in the label
// matrix.  Between two steps the neighbour counts agree with map and used.

#include "reference/cl/isomorphism_steps.h"

#include <algorithm>

#include "base/error.h"

namespace kestro {

// Adds delta to the counts of the neighbours of u.
static void add_to_neighbours(const graph *g, int u, int delta, int *counts) {
  const int end = graph_unmark(g->v[u + 1]);
  for (int j = graph_unmark(g->v[u]); j < end; j++)
    if (!graph_is_disabled(g->e[j]))
      counts[g->e[j]] += delta;
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
  write_label_matrix(work->g2, work->label_matrix);
  return start;
}

int graph_check_edges_by_matrix(const isomorphism_work *work, int u, int w) {
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

bool isomorphism_candidate(const isomorphism_work *work, int u, int degree,
                           int w, int depth) {
  const graph *g2 = work->g2;
  return !work->used[w] && work->g1->vlabel[u] == g2->vlabel[w] &&
         g2->v[w + 1] - g2->v[w] >= degree &&
         work->mapped_nbrs1[u] <= work->mapped_nbrs2[w] &&
         (depth == 0 || graph_check_edges_by_matrix(work, u, w));
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

} // namespace kestro
