// The cache of automorphisms.
//
// Every pair of patterns under one core is joined along all automorphisms of
// that core, so they are listed once per level and core, by the resumable
// search along the core's breadth-first order.

#include "reference/mining/automorphisms.h"

#include <algorithm>
#include <new>

#include "base/comparators.h"
#include "base/error.h"
#include "base/xmalloc.h"
#include "graph/connectivity.h"
#include "reference/cl/next_isomorphism.h"

namespace kestro {

static const int *entry(const void *element) {
  return *static_cast<const int *const *>(element);
}

int compare_automorphisms(const void *a, const void *b) {
  const int *x = entry(a);
  const int *y = entry(b);
  if (x[0] != y[0])
    return x[0] - y[0];
  assert(x[1] == y[1]);
  return compare_int_arrays(x + 2, y + 2, x[1]);
}

static int compare_cores(const void *a, const void *b) {
  return entry(a)[0] - entry(b)[0];
}

automorphism_cache *automorphism_cache_create() {
  automorphism_cache_ptr cache(new (xmalloc(sizeof(automorphism_cache)))
                                   automorphism_cache());
  cache->entries = ksstack_new(1, static_cast<int>(sizeof(int *)));
  return cache.release();
}

void automorphism_cache_free(automorphism_cache *cache) {
  if (!cache)
    return;
  for (int i = 0; cache->entries && i < cache->entries->count; i++)
    xfree(ksstack_array<int *>(cache->entries)[i]);
  ksstack_free(cache->entries);
  cache->~automorphism_cache();
  xfree(cache);
}

static void add_entry(automorphism_cache *cache, int core, const int *perm,
                      int n) {
  const size_t bytes = (2 + static_cast<size_t>(n)) * sizeof(int);
  xptr<int> added(static_cast<int *>(xmalloc(bytes)));
  added.get()[0] = core;
  added.get()[1] = n;
  std::copy(perm, perm + n, added.get() + 2);
  const int *address = added.get();
  if (ksstack_bsearch(&address, cache->entries, compare_automorphisms))
    return;
  ksstack_insert_sorted(&address, cache->entries, compare_automorphisms);
  added.release();
}

static void add_automorphisms(automorphism_cache *cache, int core,
                              const graph *g, interruption_poll *poll) {
  xvector<int> map(static_cast<size_t>(g->vs), -1);
  xvector<int> order(static_cast<size_t>(g->vs));
  graph_bfs_order(g, order.data());
  while (graph_next_isomorphism(&cache->arrays, g, g, order.data(), map.data(),
                                poll))
    add_entry(cache, core, map.data(), g->vs);
}

static int find_core(const automorphism_cache *cache, int core) {
  const int key[2] = {core, 0};
  const int *address = key;
  return ksstack_lower_bound(&address, cache->entries, compare_cores);
}

int automorphism_cache_find(automorphism_cache *cache, int core,
                            const graph *core_graph, interruption_poll *poll) {
  const int index = find_core(cache, core);
  if (index != -1)
    return index;
  add_automorphisms(cache, core, core_graph, poll);
  return find_core(cache, core);
}

const int *automorphism_cache_perm(const automorphism_cache *cache, int i,
                                   int core) {
  if (i >= cache->entries->count)
    return nullptr;
  const int *found = ksstack_array<int *>(cache->entries)[i];
  return found[0] == core ? found + 2 : nullptr;
}

} // namespace kestro
