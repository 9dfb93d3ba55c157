// The entry points of the isomorphism engine.
//
// Each prepares the work arrays, runs one search and leaves the label matrix
// clean.  They differ in what is given, a partial mapping or an order, and in
// what comes back.  A test against a transaction allocates nothing once the
// work arrays have grown.

#include "reference/cl/subgraph_isomorphism.h"

#include <algorithm>

#include "base/error.h"
#include "reference/cl/isomorphism.h"
#include "reference/cl/isomorphism_calls.h"

namespace kestro {

static void fix_vertices(const isomorphism_work *work, const int *active) {
  std::copy_n(active, work->g1->vs, work->active);
}

// Clears order but for the fixed vertices, which come first.
static void order_fixed_vertices(const isomorphism_work *work) {
  std::fill_n(work->order, work->g1->vs, -1);
  int depth = 0;
  for (int i = 0; i < work->g1->vs; i++)
    if (work->active[i])
      work->order[depth++] = i;
}

// Prepares the arrays and searches with an order of its own; tells the start.
static int search_choosing_order(const isomorphism_work *work,
                                 isomorphism_start *start) {
  *start = setup_isomorphism_work_area(work);
  KESTRO_CHECK(start->vertex != -1);
  order_fixed_vertices(work);
  return isomorphism_and_order(work, start->vertex, start->depth);
}

static int search_by_order(const isomorphism_work *work, const int *order) {
  std::copy_n(order, work->g1->vs, work->order);
  const isomorphism_start start = setup_isomorphism_work_area(work);
  return isomorphism_by_order(work, start.depth);
}

int graph_find_isomorphism(const graph *g1, const graph *g2) {
  return graph_find_isomorphism_and_order(g1, g2, nullptr, nullptr);
}

int graph_find_isomorphism_map(const graph *g1, const graph *g2, int *map) {
  return graph_find_isomorphism_and_order(g1, g2, map, nullptr);
}

int graph_find_isomorphism_and_order(const graph *g1, const graph *g2, int *map,
                                     int *order) {
  const shared_call call(g1, g2, map, order);
  isomorphism_start start;
  return search_choosing_order(&call.work, &start);
}

int graph_find_isomorphism_by_order(const graph *g1, const graph *g2, int *map,
                                    const int *order) {
  const shared_call call(g1, g2, map);
  return search_by_order(&call.work, order);
}

int graph_extend_isomorphism_and_order(const graph *g1, const graph *g2,
                                       int *map, int *order,
                                       const int *active) {
  const shared_call call(g1, g2, map, order);
  fix_vertices(&call.work, active);
  isomorphism_start start;
  return search_choosing_order(&call.work, &start);
}

int graph_extend_isomorphism_by_order(const graph *g1, const graph *g2,
                                      int *map, const int *order,
                                      const int *active) {
  const shared_call call(g1, g2, map);
  fix_vertices(&call.work, active);
  return search_by_order(&call.work, order);
}

// All positions before that of the lowest free vertex hold fixed vertices.
static ksstack *list_isomorphisms(const isomorphism_work *work) {
  isomorphism_start start;
  if (!search_choosing_order(work, &start))
    return nullptr;
  const int element_size =
      int_count(static_cast<size_t>(work->g1->vs) * sizeof(int));
  ksstack_ptr maps(ksstack_new(16, element_size));
  setup_isomorphism_work_area(work);
  all_isomorphisms(work, start.vertex, maps.get());
  return maps.release();
}

ksstack *graph_isomorphisms_extending(const graph *g1, const graph *g2,
                                      int *map, const int *active) {
  const shared_call call(g1, g2, map);
  fix_vertices(&call.work, active);
  return list_isomorphisms(&call.work);
}

ksstack *graph_all_isomorphisms(const graph *g1, const graph *g2) {
  const shared_call call(g1, g2);
  return list_isomorphisms(&call.work);
}

} // namespace kestro
