// Joining the frequent patterns of one size into candidates of the next.
//
// Two patterns A and B that are one core plus an edge each are glued along
// every automorphism of the core: A's extra edge is disabled in a working copy
// and built onto B in up to two ways, unless that edge has been built there
// before.  Every pattern of the next size that can
// be frequent comes out of some pair under some core, because each keeps two of
// its parents; duplicates and patterns with an infrequent part are weeded out
// at registration.

#include "mining/candidates.h"

#include <algorithm>
#include <utility>

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
  closure_filter filter(children);
  extension_set made;
  automorphism_cache_ptr automorphisms(automorphism_cache_create());
  const sg_ptr scratch(sg_create(2 * k, k + 1)); // as large as can be
  const join_context context = {children,      cores,    automorphisms.get(),
                                &failed,       &filter,  &made,
                                scratch.get(), out.get()};
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

// The vertex of a pattern outside its core, -1 when the core has them all.
static int vertex_outside(const sg_parent *entry) {
  for (int i = 0; i < entry->vs; i++)
    if (entry->map[i] == -1)
      return i;
  return -1;
}

namespace {

// One join: a's extra edge, disabled in g1, and what it is built onto.
struct join {
  const graph *g1;
  const subgraph *b;
  int u, w;    // ends of the extra edge in g1
  int elabel;  // its label
  int outside; // b's vertex outside the core, or -1
  const join_context *context;

  // Builds and registers up to two candidates along a map of g1 into b.
  void along(const int *map) const {
    const int x = map[u] == -1 ? u : map[w] == -1 ? w : -1;
    if (x == -1) {
      if (is_new(map[u], map[w], -1))
        build(graph_merge, map);
      return;
    }
    const int p = map[x == u ? w : u];
    if (is_new(p, -1, g1->vlabel[x]))
      build(graph_merge, map);
    if (outside != -1 && b->g->vlabel[outside] == g1->vlabel[x] &&
        is_new(p, outside, -1))
      build(graph_merge_with_loop, map);
  }

  bool is_new(int from, int to, int vlabel) const {
    if (to != -1 && to < from)
      std::swap(from, to);
    return context->made->insert({b, from, to, elabel, vlabel});
  }

  template <class Merge> void build(Merge merge, const int *map) const {
    subgraph *cand = context->scratch;
    if (!merge(g1, b->g, u, w, map, cand->g))
      return;
    sg_register_candidate(cand, context->failed, context->out,
                          context->children, context->filter);
    sg_clear_parent(cand);
  }
};

} // namespace

void sg_join(const subgraph *a, const subgraph *b, const sg_parent *ea,
             const sg_parent *eb, const join_context *context) {
  const int core = ea->pid;
  const graph *core_graph = sg_set_get(context->cores, core)->g;
  const graph_ptr g1(graph_copy(a->g));
  graph_mark_edge_between(g1.get(), ea->u, ea->v);
  const join made = {g1.get(),
                     b,
                     ea->u,
                     ea->v,
                     graph_edge_label(a->g, ea->u, ea->v),
                     vertex_outside(eb),
                     context};
  xvector<int> map(static_cast<size_t>(ea->vs));
  int i = automorphism_cache_find(context->automorphisms, core, core_graph);
  for (const int *perm; (perm = automorphism_cache_perm(context->automorphisms,
                                                        i, core)) != nullptr;
       i++) {
    setup_map(ea, eb, perm, core_graph->vs, map.data());
    made.along(map.data());
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
