// Registration: canonical form, duplicates, downward closure.
//
// Duplicates meet because isomorphic candidates share one canonical form.  The
// closure test takes out each edge in turn, in place, and looks the canonical
// remainder up in the previous level; edges that hold the candidate together
// are not tested.  A filter sees most candidates fail before any such form. The
// remainder's vertex ids tell which vertex of the candidate went where, which
// is the map of the parent entry.

#include "mining/registration.h"

#include <algorithm>

#include "cl/canonical.h"
#include "graph/compacted.h"
#include "graph/edge_marks.h"
#include "mining/parents.h"

namespace kestro {

static thread_local registration_counts counts;

registration_counts *sg_registration_counts() { return &counts; }

// Offers cand the parent prev[pid], whose canonical graph rest is cand's
// without u-w.
static void offer_parent(subgraph *cand, int pid, int u, int w,
                         const graph *rest, const sg_set *prev) {
  const int vs = cand->g->vs;
  xvector<int> memory(static_cast<size_t>(sg_parent_ints(vs)), -1);
  auto *entry = reinterpret_cast<sg_parent *>(memory.data());
  entry->pid = pid;
  entry->u = u;
  entry->v = w;
  entry->vs = vs;
  for (int j = 0; j < rest->vs; j++)
    entry->map[rest->vid[j]] = j;
  sg_update_parent_info(cand, entry, prev);
  sg_add_pid(cand, pid);
}

// Whether cand without that edge is in prev; records it as a parent.
static bool check_deletion(subgraph *cand, const removable_edge &edge,
                           subgraph *scratch, const sg_set *prev) {
  graph_mark_edge_between(cand->g, edge.u, edge.w);
  graph_copy_compacted(cand->g, scratch->g);
  graph_enable_edge_between(cand->g, edge.u, edge.w);
  cl_canonicalize_graph(scratch->g);
  const int pid = sg_set_find(prev, scratch);
  if (pid == -1)
    return false;
  offer_parent(cand, pid, edge.u, edge.w, scratch->g, prev);
  return true;
}

// Whether every connected graph that is cand less one edge is in prev.
static bool is_downward_closed(subgraph *cand, const sg_set *prev,
                               closure_filter *filter) {
  xvector<removable_edge> edges;
  find_removable_edges(cand->g, &edges);
  for (const removable_edge &edge : edges)
    if (filter && !filter->contains(filter->label_without(cand->g, edge)))
      return false;
  sg_ptr scratch(sg_create(cand->g->es, cand->g->vs));
  for (const removable_edge &edge : edges)
    if (!check_deletion(cand, edge, scratch.get(), prev))
      return false;
  return true;
}

void sg_register_candidate(subgraph *cand, failed_candidates *failed,
                           sg_set *out, const sg_set *prev,
                           closure_filter *filter) {
  counts.attempts++;
  sg_clear_pid(cand);
  cl_canonicalize_graph(cand->g);
  if (failed->contains(cand)) {
    counts.already_rejected++;
    return;
  }
  if (sg_set_find(out, cand) != -1) {
    counts.duplicates++;
    return;
  }
  for (int i = 0; i < cand->g->vs; i++)
    cand->g->vid[i] = i;
  if (!is_downward_closed(cand, prev, filter)) {
    failed->insert(cand);
    counts.newly_rejected++;
    return;
  }
  sg_set_insert(out, sg_ptr(sg_copy(cand)));
  counts.accepted++;
}

} // namespace kestro
