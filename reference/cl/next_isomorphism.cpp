// The resumable isomorphism search.
//
// The state of the search is the mapping itself: the work arrays are rebuilt
// from it.  A mapped vertex stands for a choice whose earlier alternatives are
// exhausted but which may still have other continuations, so deeper positions
// are advanced first; only when they are exhausted does the vertex itself move
// on to its next candidate, and the positions behind it start again.

#include "reference/cl/next_isomorphism.h"

#include <algorithm>
#include <cstdio>

#include "base/error.h"

namespace kestro {

static void warn_of_reentry(int unmapped) {
  const std::string text =
      message_text("isomorphism.c", "irregular reentry %d\n", unmapped);
  fputs(text.c_str(), stderr);
}

// Takes back the choices at depth and behind it.
static void unmap_from(const isomorphism_work *work, int depth) {
  for (; depth < work->g1->vs; depth++)
    if (work->map[work->order[depth]] != -1)
      isomorphism_unmap_vertex(work, work->order[depth]);
}

static int advance(const isomorphism_work *work, int depth,
                   interruption_poll *poll) {
  if (depth == work->g1->vs)
    return 0;
  const int u = work->order[depth];
  const int image = work->map[u];
  if (image != -1 && advance(work, depth + 1, poll))
    return 1;
  unmap_from(work, depth);
  const int degree = graph_vertex_degree(work->g1, u);
  for (int w = image + 1; w < work->g2->vs; w++) {
    if (!isomorphism_candidate(work, u, degree, w, depth))
      continue;
    isomorphism_map_vertex(work, u, w);
    if (depth + 1 == work->g1->vs || advance(work, depth + 1, poll))
      return 1;
    isomorphism_unmap_vertex(work, u);
  }
  if (poll)
    poll->step(work->g2->vs);
  return 0;
}

int graph_next_isomorphism(isomorphism_arrays *arrays, const graph *g1,
                           const graph *g2, const int *order, int *map,
                           interruption_poll *poll) {
  const isomorphism_call call(arrays, g1, g2, map);
  const isomorphism_work *work = &call.work;
  std::copy_n(order, g1->vs, work->order);
  int unmapped = 0;
  for (int depth = 0; depth < g1->vs; depth++) {
    const int u = order[depth];
    work->active[u] = map[u] != -1;
    unmapped += map[u] == -1;
  }
  if (unmapped != g1->vs && unmapped != 0 && unmapped != 1)
    warn_of_reentry(unmapped);
  setup_isomorphism_work_area(work);
  return advance(work, 0, poll);
}

} // namespace kestro
