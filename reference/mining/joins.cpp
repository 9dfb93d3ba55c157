// The prescribed steps of a join.

#include "reference/mining/joins.h"

#include <algorithm>
#include <cassert>

#include "reference/mining/automorphisms.h"

namespace kestro {

// Where each automorphism of the core with id p brings the edge that entry
// tells of.
static xvector<edge_place> places_of(const sg_parent *entry, int p,
                                     const graph *core) {
  const automorphism_cache_ptr cache(automorphism_cache_create());
  const edge_place own = sg_place_in_core(entry);
  xvector<edge_place> places;
  int i = automorphism_cache_find(cache.get(), p, core);
  while (const int *perm = automorphism_cache_perm(cache.get(), i++, p))
    places.push_back({perm[own.u], own.w == -1 ? -1 : perm[own.w]});
  return places;
}

void sg_join_pair(int a, int b, int p, const sg_set *cores,
                  join_context *context) {
  const subgraph *sa = sg_set_get(context->children(), a);
  const subgraph *sb = sg_set_get(context->children(), b);
  const sg_parent *ea = sg_find_kept(sa, p);
  const sg_parent *eb = sg_find_kept(sb, p);
  if (!ea || !eb)
    return;
  const xvector<edge_place> places = places_of(ea, p, sg_set_get(cores, p)->g);
  sg_join(a, b, ea, eb, places, context);
}

static xvector<int> images_of(const sg_parent *entry) {
  xvector<int> images;
  for (int i = 0; i < entry->vs; i++)
    images.push_back(entry->image(i));
  return images;
}

void setup_map(const sg_parent *ea, const sg_parent *eb, const int *perm, int n,
               int *map) {
  const int core_vs = n;
  const xvector<int> to_core1 = images_of(ea);
  const xvector<int> to_core2 = images_of(eb);
  const int *g1_to_core1 = to_core1.data();
  const int *g2_to_core2 = to_core2.data();
  xvector<int> core2_to_g2(static_cast<size_t>(n), -1);
  for (int i = 0; i < eb->vs; i++) {
    if (g2_to_core2[i] == -1)
      continue;
    assert(g2_to_core2[i] < core_vs);
    core2_to_g2[static_cast<size_t>(g2_to_core2[i])] = i;
  }
  std::fill(map, map + ea->vs, -1);
  int *g1_to_core2 = map; // turned into the map to g2 in place
  for (int i = 0; i < ea->vs; i++) {
    if (g1_to_core1[i] == -1)
      continue;
    assert(g1_to_core1[i] < core_vs);
    g1_to_core2[i] = perm[g1_to_core1[i]];
    assert(g1_to_core2[i] < core_vs);
    map[i] = core2_to_g2[static_cast<size_t>(g1_to_core2[i])];
  }
}

} // namespace kestro
