// The prescribed steps of a join.

#include "reference/mining/joins.h"

#include <algorithm>
#include <cassert>

namespace kestro {

void sg_join_pair(int a, int b, int p, join_context *context) {
  const subgraph *sa = sg_set_get(context->children, a);
  const subgraph *sb = sg_set_get(context->children, b);
  const int index_a = sg_find_parent(sa, p);
  const int index_b = sg_find_parent(sb, p);
  if (index_a == -1 || index_b == -1)
    return;
  const subgraph *core = sg_set_get(context->cores, p);
  const int automorphism =
      core->rigid ? -1
                  : automorphism_cache_find(context->automorphisms, p, core->g);
  sg_join(a, b, sg_parent_at(sa, index_a), sg_parent_at(sb, index_b),
          automorphism, context);
}

void setup_map(const sg_parent *ea, const sg_parent *eb, const int *perm, int n,
               int *map) {
  const int core_vs = n;
  const int *g1_to_core1 = ea->map;
  const int *g2_to_core2 = eb->map;
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
