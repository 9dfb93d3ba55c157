// Registration: look-ups, building, canonical form, duplicates, closure.
//
// Duplicates meet because isomorphic candidates share one canonical form.  The
// closure test asks for each edge in turn which pattern of the previous level
// the candidate without it is; edges that hold the candidate together are not
// tested.  A parent that cannot be derived from the pattern extended is found
// by the canonical form of the remainder, made in place: its vertex ids say
// which vertex of the candidate went where, which is the map of the parent
// entry.  Once many such forms were in vain, a filter spares most of the
// others. Of edges that automorphisms of the candidate bring to one another,
// one is asked for.

#include "mining/registration.h"

#include <algorithm>
#include <utility>

#include "graph/compacted.h"
#include "graph/edge_marks.h"
#include "graph/extend.h"
#include "mining/parents.h"

namespace kestro {

// Fills entry for cand without that edge through its canonical form; false when
// that is not in the level below.  Tells whether that form is known not to
// depend on the order of vertices.
static bool find_by_form(subgraph *cand, const removable_edge &edge,
                         registration *to, sg_parent *entry, bool *invariant) {
  if (!to->rest || 2 * to->rest->parents_room < cand->g->es)
    to->rest.reset(sg_create(cand->g->es, cand->g->es / 2 + 1));
  graph *rest = to->rest->g;
  graph_mark_edge_between(cand->g, edge.u, edge.w);
  graph_copy_compacted(cand->g, rest);
  graph_enable_edge_between(cand->g, edge.u, edge.w);
  *invariant = to->forms.canonicalize(rest).invariant;
  entry->pid = sg_set_find(to->prev, to->rest.get());
  if (entry->pid == -1) {
    to->filter.note_miss();
    return false;
  }
  for (int i = 0; i < entry->vs; i++)
    entry->set_image(i, -1);
  for (int j = 0; j < rest->vs; j++)
    entry->set_image(rest->vid[j], j);
  return true;
}

// Whether cand without any of the edges whose parents are not known can be in
// the level below, by the filter.
static bool can_be_closed(const subgraph *cand,
                          const xvector<removable_edge> &edges,
                          const derived_parents *known, registration *to) {
  if (known && known->knows_all())
    return true;
  for (const removable_edge &edge : edges)
    if (!(known && known->knows(edge)) &&
        !to->filter.may_contain(cand->g, edge))
      return false;
  return true;
}

// Enters the parents of cand edge by edge; false when one is missing.
static bool enter_each(subgraph *cand, const xvector<removable_edge> &edges,
                       const derived_parents *known, registration *to) {
  const size_t ints = sg_parent_bytes(cand->g->vs) / sizeof(int);
  if (to->memory.size() < ints)
    to->memory.resize(ints);
  auto *entry = reinterpret_cast<sg_parent *>(to->memory.data());
  entry->vs = short_vertex(cand->g->vs);
  bool invariant;
  for (const removable_edge &edge : edges) {
    entry->u = short_vertex(edge.u);
    entry->v = short_vertex(edge.w);
    if (!(known && known->find(edge, entry)) &&
        !find_by_form(cand, edge, to, entry, &invariant))
      return false;
    sg_update_parent_info(cand, entry, to->prev);
  }
  return true;
}

// The same where automorphisms of cand may bring edges to one another.
static bool enter_with_images(subgraph *cand,
                              const xvector<removable_edge> &edges,
                              const derived_parents *known, registration *to) {
  parent_images *all = &to->images;
  all->set(cand->g, edges);
  for (size_t i = 0; i < edges.size(); i++)
    if (!all->has(i) && known && known->find(edges[i], all->at(i)))
      all->enter_with_images(i);
  for (size_t i = 0; i < edges.size(); i++)
    if (!all->has(i) && !to->filter.may_contain(cand->g, edges[i]))
      return false;
  for (size_t i = 0; i < edges.size(); i++) {
    bool invariant = false;
    if (!all->has(i) &&
        !find_by_form(cand, edges[i], to, all->at(i), &invariant))
      return false;
    if (invariant)
      all->enter_with_images(i);
    sg_update_parent_info(cand, all->at(i), to->prev);
  }
  return true;
}

// With fewer unknown parents than this, finding the automorphisms costs more
// than forms.
static constexpr int many_unknown = 3;

static int count_unknown(const xvector<removable_edge> &edges,
                         const derived_parents *known) {
  if (known && known->knows_all())
    return 0;
  int unknown = 0;
  for (const removable_edge &edge : edges)
    unknown += !(known && known->knows(edge));
  return unknown;
}

// Whether every connected graph that is cand less one edge is in the level
// below; these are entered as cand's parents.
static bool is_downward_closed(subgraph *cand, const derived_parents *known,
                               registration *to) {
  const xvector<removable_edge> &edges = to->edges.of(cand->g);
  if (!cand->rigid && count_unknown(edges, known) >= many_unknown)
    return enter_with_images(cand, edges, known, to);
  return can_be_closed(cand, edges, known, to) &&
         enter_each(cand, edges, known, to);
}

// Counts a candidate that turned out to have an infrequent part.
static const subgraph *reject(registration *to) {
  to->counts.newly_rejected++;
  return nullptr;
}

// Registers cand; the parents that known has, if any, are those of cand as its
// vertices are numbered now.
static const subgraph *register_with(subgraph *cand, derived_parents *known,
                                     registration *to) {
  sg_clear_parents(cand);
  const canonical_form form = to->forms.canonicalize(cand->g);
  cand->invariant = form.invariant;
  cand->rigid = form.rigid;
  to->invariant_outcome = form.invariant;
  if (to->failed.contains(cand)) {
    to->counts.already_rejected++;
    return nullptr;
  }
  if (to->accepted.contains(cand)) {
    to->counts.duplicates++;
    return nullptr;
  }
  if (known)
    known->take_order(cand->g);
  for (int i = 0; i < cand->g->vs; i++)
    cand->g->vid[i] = i;
  if (!is_downward_closed(cand, known, to)) {
    to->failed.insert(cand);
    return reject(to);
  }
  to->counts.accepted++;
  return to->accepted.insert(cand);
}

// Room for candidates of a size, its sets for what is known of them so far.
static sg_ptr new_scratch(int edges) {
  sg_ptr scratch(sg_create(2 * edges, edges + 1));
  // These sets come when a candidate gets so far.
  for (ksstack **set : {&scratch->child, &scratch->tid, &scratch->cover})
    ksstack_free(std::exchange(*set, nullptr));
  return scratch;
}

const subgraph *sg_offer_extension(const extension &x, registration *to) {
  to->counts.attempts++;
  to->invariant_outcome = true; // a part that look-ups miss is missing in all
  if (to->derived && !to->derived->look_up(x))
    return reject(to);
  const graph *g = sg_set_get(to->prev, x.pattern)->g;
  if (!to->scratch)
    to->scratch = new_scratch(g->es / 2 + 1);
  subgraph *cand = to->scratch.get();
  if (x.to == -1)
    graph_extend_to_new(g, x.from, x.elabel, x.vlabel, cand->g);
  else
    graph_extend_between(g, x.from, x.to, x.elabel, cand->g);
  return register_with(cand, to->derived, to);
}

} // namespace kestro
