// Registration step by step: canonical form, duplicates, then for every edge
// the walk that tells whether the rest is connected, and the canonical form of
// that rest, which must be in the level below.

#include "reference/mining/registration.h"

#include <algorithm>
#include <utility>

#include "graph/compacted.h"
#include "mining/parents.h"
#include "reference/graph/edge_marks.h"

namespace kestro {

// Fills entry for cand, of which an edge is disabled; false when that graph is
// not in the level below.
static bool find_parent(const subgraph *cand, registration *to,
                        sg_parent *entry) {
  const sg_ptr rest(sg_create(cand->g->es, cand->g->vs));
  graph_copy_compacted(cand->g, rest->g);
  to->forms.canonicalize(rest->g);
  entry->pid = sg_set_find(to->prev, rest.get());
  if (entry->pid == -1)
    return false;
  for (int i = 0; i < entry->vs; i++)
    entry->set_image(i, -1);
  for (int j = 0; j < rest->g->vs; j++)
    entry->set_image(rest->g->vid[j], j);
  return true;
}

// Whether the edge u-w either splits cand or leaves a graph that is in the
// level below; that is entered as a parent.
static bool is_closed_at(subgraph *cand, int u, int w, registration *to,
                         sg_parent *entry) {
  if (!graph_disable_edge_between(cand->g, u, w))
    return true;
  entry->u = short_vertex(u);
  entry->v = short_vertex(w);
  const bool found = find_parent(cand, to, entry);
  graph_enable_edge_between(cand->g, u, w);
  if (!found)
    return false;
  sg_update_parent_info(cand, entry, to->prev);
  return true;
}

static bool is_downward_closed(subgraph *cand, registration *to) {
  const graph *g = cand->g;
  xvector<int> memory(sg_parent_bytes(g->vs) / sizeof(int));
  auto *entry = reinterpret_cast<sg_parent *>(memory.data());
  entry->vs = short_vertex(g->vs);
  for (int u = 0; u < g->vs; u++)
    for (int j = g->v[u]; j < g->v[u + 1]; j++)
      if (g->e[j] > u && !is_closed_at(cand, u, g->e[j], to, entry))
        return false;
  return true;
}

const subgraph *sg_register_candidate(subgraph *cand, registration *to) {
  to->counts.attempts++;
  sg_clear_parents(cand);
  const canonical_form form = to->forms.canonicalize(cand->g);
  cand->invariant = form.invariant;
  cand->rigid = form.rigid;
  if (to->failed.contains(cand)) {
    to->counts.already_rejected++;
    return nullptr;
  }
  if (to->accepted.contains(cand)) {
    to->counts.duplicates++;
    return nullptr;
  }
  for (int i = 0; i < cand->g->vs; i++)
    cand->g->vid[i] = i;
  if (!is_downward_closed(cand, to)) {
    to->failed.insert(cand);
    to->counts.newly_rejected++;
    return nullptr;
  }
  to->counts.accepted++;
  return to->accepted.insert(cand);
}

} // namespace kestro
