// Joining the frequent patterns of one size into candidates of the next.
//
// Two patterns A and B that are one core plus an edge each are glued along
// every automorphism of the core: A's extra edge is disabled in a working copy
// and built onto B in up to two ways.  Every pattern of the next size that can
// be frequent comes out of some pair under some core, because each keeps two of
// its parents; duplicates and patterns with an infrequent part are weeded out
// at registration.

#include "mining/candidates.h"

#include <algorithm>

#include "base/error.h"
#include "base/xmalloc.h"
#include "graph/edge_marks.h"
#include "graph/merge.h"
#include "mining/statistics.h"

namespace kestro {

sg_set *sg_generate_candidates(const sg_set *children, const sg_set *cores) {
  const int k = sg_set_get(children, 0)->g->es / 2 + 1;
  *sg_registration_counts() = {};
  sg_set_ptr out(sg_set_create());
  failed_candidates failed;
  automorphism_cache_ptr automorphisms(automorphism_cache_create());
  const join_context context = {children, cores, automorphisms.get(), &failed,
                                out.get()};
  for (int p = 0; p < sg_set_size(cores); p++) {
    const subgraph *core = sg_set_get(cores, p);
    const int n = sg_child_size(core);
    for (int i = 0; i < n; i++)
      for (int j = i; j < n; j++)
        sg_join_pair(sg_set_get(children, sg_child_at(core, i)),
                     sg_set_get(children, sg_child_at(core, j)), p, &context);
  }
  KESTRO_STRUCTURE(sg_set_check(out.get()));
  stats_set(stats_candidates, k, sg_set_size(out.get()));
  return out.release();
}

// Parent ids are unique within a pattern, so each of them has one entry for p.
void sg_join_pair(const subgraph *a, const subgraph *b, int p,
                  const join_context *context) {
  const int index_a = sg_find_parent(a, p);
  const int index_b = sg_find_parent(b, p);
  if (index_a == -1 || index_b == -1)
    return;
  sg_join(a, b, sg_parent_at(a, index_a), sg_parent_at(b, index_b), context);
}

void sg_join(const subgraph *a, const subgraph *b, const sg_parent *ea,
             const sg_parent *eb, const join_context *context) {
  const int core = ea->pid;
  const graph *core_graph = sg_set_get(context->cores, core)->g;
  sg_ptr cand(sg_create(a->g->es + 2, a->g->vs + 1));
  graph_ptr g1(graph_copy(a->g));
  xvector<int> map(static_cast<size_t>(ea->vs));

  const auto offer = [&] {
    sg_register_candidate(cand.get(), context->failed, context->out,
                          context->children);
    sg_clear_parent(cand.get());
  };
  int i = automorphism_cache_find(context->automorphisms, core, core_graph);
  for (const int *perm; (perm = automorphism_cache_perm(context->automorphisms,
                                                        i, core)) != nullptr;
       i++) {
    setup_map(ea, eb, perm, core_graph->vs, map.data());
    graph_disable_edge_between(g1.get(), ea->u, ea->v);
    if (graph_merge(g1.get(), b->g, ea->u, ea->v, map.data(), cand->g))
      offer();
    if (graph_merge_with_loop(g1.get(), b->g, ea->u, ea->v, map.data(),
                              cand->g))
      offer();
    graph_enable_edge_between(g1.get(), ea->u, ea->v);
  }
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
