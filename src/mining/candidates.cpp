// Joining the frequent patterns of one size into candidates of the next.
//
// Two patterns A and B that are one core plus an edge each are glued along
// every automorphism of the core: A's extra edge lands on B in up to two ways.
// A place that was met before, or whose candidate is seen by look-ups to have
// an infrequent part, is passed over; else A's edge is disabled in a working
// copy and built onto B.  Every pattern of the next size that can be frequent
// comes out of some pair under some core, because each keeps two of its
// parents; the duplicates and infrequent parts that are left are weeded out at
// registration.

#include "mining/candidates.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <utility>

#include "base/error.h"
#include "base/parallel.h"
#include "base/xmalloc.h"
#include "graph/edge_marks.h"
#include "graph/merge.h"

namespace kestro {

static int first_automorphism(automorphism_cache *cache, int core,
                              const subgraph *sg) {
  return sg->rigid ? -1 : automorphism_cache_find(cache, core, sg->g);
}

namespace {

// Joins the children of cores on one thread.
class joiner {
public:
  joiner(const sg_set *children, const sg_set *cores,
         automorphism_cache *automorphisms, const child_table *table,
         int stabilizer_threshold)
      : derived_(children, cores, automorphisms, table),
        registry_(children, stabilizer_threshold, &derived_),
        scratch_(sg_create(2 * size_above(children), size_above(children) + 1)),
        work_(size_above(children) - 1), context_{children,       cores,
                                                  automorphisms,  &made_,
                                                  scratch_.get(), &work_,
                                                  &registry_} {
    scratch_->links = sg_links_create(scratch_->g->vs);
    // These sets come when a candidate gets so far.
    for (ksstack **set : {&scratch_->child, &scratch_->tid, &scratch_->cover})
      ksstack_free(std::exchange(*set, nullptr));
  }

  void join_children_of(int p) {
    const subgraph *core = sg_set_get(context_.cores, p);
    const int n = sg_child_size(core);
    if (n == 0)
      return;
    const int automorphism =
        first_automorphism(context_.automorphisms, p, core);
    entries_.clear();
    for (int i = 0; i < n; i++)
      entries_.push_back(entry_of(sg_child_at(core, i), p));
    for (int i = 0; i < n; i++)
      for (int j = i; j < n; j++)
        sg_join(sg_child_at(core, i), sg_child_at(core, j),
                entries_[static_cast<size_t>(i)],
                entries_[static_cast<size_t>(j)], automorphism, &context_);
  }

  registration *registry() { return &registry_; }

private:
  // A child's entry for its core p.  Parent ids are unique within a pattern.
  const sg_parent *entry_of(int child, int p) const {
    const subgraph *sg = sg_set_get(context_.children, child);
    return sg_parent_at(sg, sg_find_parent(sg, p));
  }

  // Edges of a pattern one larger than those of a level.
  static int size_above(const sg_set *level) {
    return sg_set_get(level, 0)->g->es / 2 + 1;
  }

  derived_parents derived_;
  registration registry_;
  extension_set made_;
  sg_ptr scratch_; // as large as a candidate can be
  join_work work_;
  xvector<const sg_parent *> entries_; // by child of a core
  join_context context_;
};

} // namespace

generation sg_generate_candidates(const sg_set *children, const sg_set *cores,
                                  const generation_options &options) {
  automorphism_cache_ptr automorphisms(automorphism_cache_create());
  const child_table table(children, cores, automorphisms.get());
  const int workers = worker_count(options.jobs, sg_set_size(cores));
  // A joiner belongs to the thread that makes and ends it.
  xvector<std::unique_ptr<joiner>> joiners(static_cast<size_t>(workers));
  xvector<candidate_set> accepted(static_cast<size_t>(workers));
  xvector<registration_counts> counted(static_cast<size_t>(workers));
  parallel_for(
      workers, sg_set_size(cores),
      [&](int worker, int p) {
        std::unique_ptr<joiner> &own = joiners[static_cast<size_t>(worker)];
        if (!own)
          own = std::make_unique<joiner>(children, cores, automorphisms.get(),
                                         &table, options.stabilizer_threshold);
        own->join_children_of(p);
      },
      [&](int worker) {
        const size_t w = static_cast<size_t>(worker);
        if (!joiners[w])
          return;
        accepted[w] = std::move(joiners[w]->registry()->accepted);
        counted[w] = joiners[w]->registry()->counts;
        joiners[w].reset();
      });
  generation made;
  for (size_t w = 0; w < accepted.size(); w++) {
    made.counts += counted[w];
    if (w > 0)
      accepted[0].take_over(&accepted[w]);
  }
  made.candidates.reset(accepted[0].release_sorted());
  KESTRO_STRUCTURE(sg_set_check(made.candidates.get()));
  return made;
}

void sg_join_pair(int a, int b, int p, const join_context *context) {
  const subgraph *sa = sg_set_get(context->children, a);
  const subgraph *sb = sg_set_get(context->children, b);
  const int index_a = sg_find_parent(sa, p);
  const int index_b = sg_find_parent(sb, p);
  if (index_a == -1 || index_b == -1)
    return;
  const subgraph *core = sg_set_get(context->cores, p);
  sg_join(a, b, sg_parent_at(sa, index_a), sg_parent_at(sb, index_b),
          first_automorphism(context->automorphisms, p, core), context);
}

// The vertex of a pattern outside its core, -1 when the core has them all.  It
// is the later end of the extra edge: degrees descend along a form, and the
// other end has more than this one edge.
static int vertex_outside(const sg_parent *entry) {
  assert(entry->map[entry->u] != -1);
  return entry->map[entry->v] == -1 ? entry->v : -1;
}

namespace {

// One join: a's extra edge, and what it is built onto.
class join {
public:
  join(int a, int b, const sg_parent *ea, const sg_parent *eb,
       const join_context *context)
      : a_(sg_set_get(context->children, a)),
        b_(sg_set_get(context->children, b)), b_id_(b), ea_(ea), eb_(eb),
        context_(context), elabel_(graph_edge_label(a_->g, ea->u, ea->v)),
        outside_(vertex_outside(eb)) {
    int *core_to_b = context->work->core_to_b.data();
    for (int i = 0; i < eb->vs; i++)
      if (eb->map[i] != -1)
        core_to_b[eb->map[i]] = i;
  }

  // Builds and registers up to two candidates along an automorphism of the
  // core.
  void along(const int *perm) {
    const int u = place_in_b(ea_->u, perm); // never outside
    const int w = place_in_b(ea_->v, perm);
    if (w != -1) {
      add(closing_extension(b_id_, u, w, elabel_), graph_merge, perm);
      return;
    }
    const int vlabel = a_->g->vlabel[ea_->v];
    add(pendant_extension(b_id_, u, elabel_, vlabel), graph_merge, perm);
    if (outside_ != -1 && b_->g->vlabel[outside_] == vlabel)
      add(closing_extension(b_id_, u, outside_, elabel_), graph_merge_with_loop,
          perm);
  }

private:
  // Where a vertex of a comes to lie in b, -1 for the one outside the core.
  int place_in_b(int vertex, const int *perm) const {
    const int in_core = ea_->map[vertex];
    return in_core == -1
               ? -1
               : context_->work->core_to_b[static_cast<size_t>(perm[in_core])];
  }

  // Builds and registers the candidate x unless it was met before or is seen to
  // have an infrequent part.
  template <class Merge>
  void add(const extension &x, Merge merge, const int *perm) {
    if (!context_->made->insert(x) ||
        (x.to != -1 && graph_has_edge(b_->g, x.from, x.to)))
      return;
    if (!context_->registry->derived->start(x)) {
      context_->registry->counts.attempts++;
      context_->registry->counts.newly_rejected++;
      return;
    }
    build(merge, perm);
    const subgraph *accepted =
        sg_register_candidate(context_->scratch, context_->registry);
    if (accepted && accepted->invariant)
      mark_made(accepted);
  }

  template <class Merge> void build(Merge merge, const int *perm) {
    join_work *work = context_->work;
    graph *g1 = work->without_edge.get();
    if (work->gone != ea_) { // joins with the same a follow one another
      graph_copy_into(a_->g, g1);
      graph_mark_edge_between(g1, ea_->u, ea_->v);
      work->gone = ea_;
    }
    setup_map(ea_, eb_, perm, eb_->vs - (outside_ != -1), work->map.data());
    subgraph *cand = context_->scratch;
    merge(g1, b_->g, ea_->u, ea_->v, work->map.data(), cand->g);
  }

  // The other ways to build a candidate whose form does not depend on how it is
  // built would only make duplicates.  Cores come in ascending order, so those
  // patterns all whose cores are done are built upon no more.
  void mark_made(const subgraph *accepted) const {
    for (int l = 0; l < sg_link_size(accepted); l++) {
      const sg_link *link = sg_link_at(accepted, l);
      const subgraph *parent = sg_set_get(context_->children, link->pid);
      if (sg_parent_at(parent, sg_parent_size(parent) - 1)->pid >= ea_->pid)
        context_->made->insert(sg_link_edge(accepted, link));
    }
  }

  const subgraph *a_;
  const subgraph *b_;
  int b_id_;
  const sg_parent *ea_;
  const sg_parent *eb_;
  const join_context *context_;
  int elabel_;  // of a's extra edge
  int outside_; // b's vertex outside the core, or -1
};

} // namespace

void sg_join(int a, int b, const sg_parent *ea, const sg_parent *eb,
             int automorphism, const join_context *context) {
  join made(a, b, ea, eb, context);
  if (automorphism == -1) {
    made.along(context->work->identity.data());
    return;
  }
  int i = automorphism;
  for (const int *perm; (perm = automorphism_cache_perm(context->automorphisms,
                                                        i, ea->pid)) != nullptr;
       i++)
    made.along(perm);
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
