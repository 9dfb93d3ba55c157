// Joining the frequent patterns of one size into candidates of the next.
//
// Two patterns A and B that are one core plus an edge each are glued along
// every automorphism of the core.  Only the place to which it brings A's extra
// edge matters, so the orbit of that place is walked instead.  From each, the
// edge lands on B in up to two places, to a new vertex or between two of B's.
// B and such a place are an extension.  One that was not seen before is offered
// to registration, which builds the candidate if need be.  Every pattern of the
// next size that can be frequent comes out of some pair under some core,
// because each keeps two of its parents; the duplicates and infrequent parts
// that are left are weeded out at registration.

#include "mining/candidates.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <utility>

#include "base/error.h"
#include "base/parallel.h"
#include "base/xmalloc.h"

namespace kestro {

namespace {

// Joins the children of cores on one thread.
class joiner {
public:
  joiner(const sg_set *children, const sg_set *cores,
         const pattern_groups *core_groups, const child_table *table,
         const generation_options &options)
      : core_groups_(core_groups), derived_(children, cores, table),
        registry_(
            children,
            labeller(options.stabilizer_threshold, options.kind, options.stop),
            &derived_, options.stop),
        context_(children, cores, &registry_, options.stop),
        child_groups_(options.stop) {}

  void join_children_of(int p) {
    const subgraph *core = sg_set_get(context_.cores, p);
    const int n = sg_child_size(core);
    if (n == 0)
      return;
    entries_.clear();
    for (int i = 0; i < n; i++)
      entries_.push_back(entry_of(sg_child_at(core, i), p));
    const pattern_group group = core_groups_->at(p);
    child_groups_.expect(group.count > 0 ? n : 0);
    for (int i = 0; i < n; i++) {
      const sg_parent *entry = entries_[static_cast<size_t>(i)];
      const std::span<const edge_place> images =
          orbit_.images(group, sg_place_in_core(entry));
      context_.poll.step(n - i);
      for (int j = i; j < n; j++)
        sg_join(sg_child_at(core, i), sg_child_at(core, j), entry,
                entries_[static_cast<size_t>(j)], images,
                images.size() >= many ? group_of_child(core, j)
                                      : pattern_group(),
                &context_);
    }
  }

  registration *registry() { return &registry_; }

private:
  // As many images of a place as make the group of the pattern that is built
  // onto worth finding: it spares no more than all but one of them.
  static constexpr size_t many = 3;

  // A child's entry for its core p.
  const sg_parent *entry_of(int child, int p) const {
    const subgraph *sg = sg_set_get(context_.children, child);
    return sg_find_kept(sg, p);
  }

  // The group of the j-th child of a core.
  pattern_group group_of_child(const subgraph *core, int j) {
    const subgraph *sg = sg_set_get(context_.children, sg_child_at(core, j));
    if (sg->rigid)
      return {};
    child_groups_.prepare(j, sg->g);
    return child_groups_.at(j);
  }

  const pattern_groups *core_groups_; // by id
  derived_parents derived_;
  registration registry_;
  join_context context_;
  pattern_groups child_groups_;        // by child of a core
  orbit_walk orbit_;                   // of a place in a core
  xvector<const sg_parent *> entries_; // by child of a core
};

} // namespace

generation sg_generate_candidates(const sg_set *children, const sg_set *cores,
                                  const generation_options &options) {
  pattern_groups core_groups(options.stop);
  const child_table table(children, cores, &core_groups, options.stop,
                          options.jobs);
  const int workers = worker_count(options.jobs, sg_set_size(cores));
  // A joiner belongs to the thread that makes and ends it.
  xvector<std::unique_ptr<joiner>> joiners(static_cast<size_t>(workers));
  xvector<candidate_set> accepted;
  for (int w = 0; w < workers; w++)
    accepted.emplace_back(options.stop);
  xvector<registration_counts> counted(static_cast<size_t>(workers));
  parallel_for(
      workers, sg_set_size(cores),
      [&](int worker, int p) {
        std::unique_ptr<joiner> &own = joiners[static_cast<size_t>(worker)];
        if (!own)
          own = std::make_unique<joiner>(children, cores, &core_groups, &table,
                                         options);
        own->join_children_of(p);
      },
      [&](int worker) {
        const size_t w = static_cast<size_t>(worker);
        if (!joiners[w])
          return;
        accepted[w] = std::move(joiners[w]->registry()->accepted);
        counted[w] = joiners[w]->registry()->counts;
        joiners[w].reset();
      },
      options.watcher);
  generation generated;
  for (size_t w = 0; w < accepted.size(); w++) {
    generated.counts += counted[w];
    if (w > 0)
      accepted[0].take_over(&accepted[w]);
  }
  generated.candidates.reset(accepted[0].release_sorted());
  for (int i = 0; i < sg_set_size(generated.candidates.get()); i++)
    generated.order_dependent +=
        !sg_set_get(generated.candidates.get(), i)->invariant;
  KESTRO_STRUCTURE(sg_set_check(generated.candidates.get()));
  return generated;
}

// The vertex of a pattern outside its core, -1 when the core has them all.  It
// is the later end of the extra edge: degrees descend along a form, and the
// other end has more than this one edge.
static int vertex_outside(const sg_parent *entry) {
  assert(entry->map[entry->u] != -1);
  return entry->map[entry->v] == -1 ? entry->v : -1;
}

namespace {

// One join: a's extra edge, and the pattern b that it is built onto.
class join {
public:
  join(int a, int b, const sg_parent *ea, const sg_parent *eb,
       const pattern_group &group_of_b, join_context *context)
      : a_(sg_set_get(context->children, a)),
        b_(sg_set_get(context->children, b)), b_id_(b), ea_(ea),
        group_of_b_(group_of_b), context_(context),
        elabel_(graph_edge_label(a_->g, ea->u, ea->v)),
        outside_(vertex_outside(eb)) {
    for (int i = 0; i < eb->vs; i++)
      if (eb->map[i] != -1)
        context->core_to_b[static_cast<size_t>(eb->map[i])] = i;
  }

  // Offers up to two candidates with the edge at a place of the core.
  void at(const edge_place &place) {
    const int u = in_b(place.u);
    if (place.w != -1) {
      close(u, in_b(place.w));
      return;
    }
    const int vlabel = a_->g->vlabel[ea_->v];
    offer(pendant_extension(b_id_, u, elabel_, vlabel));
    if (outside_ != -1 && b_->g->vlabel[outside_] == vlabel)
      close(u, outside_);
  }

private:
  int in_b(int core_vertex) const {
    return context_->core_to_b[static_cast<size_t>(core_vertex)];
  }

  void close(int u, int w) {
    if (!graph_has_edge(b_->g, u, w))
      offer(closing_extension(b_id_, u, w, elabel_));
  }

  // Offers a candidate that was not seen before.
  void offer(const extension &x) {
    if (!context_->seen.insert(x))
      return;
    const subgraph *accepted = sg_offer_extension(x, context_->registry);
    if (accepted && accepted->invariant)
      mark_seen(accepted);
    if (group_of_b_.count > 0 && context_->registry->invariant_outcome)
      mark_images(x);
  }

  // Marks the other extensions that give an accepted candidate: a parent of it
  // and the edge that the parent lacks.  Since its form does not depend on how
  // it is built, they would only give duplicates.  Cores are joined in
  // ascending order, so a parent whose last core is below the current one is
  // extended no further and needs no mark.
  void mark_seen(const subgraph *accepted) const {
    for (int l = 0; l < sg_parent_size(accepted); l++) {
      const sg_parent *entry = sg_parent_at(accepted, l);
      const subgraph *parent = sg_set_get(context_->children, entry->pid);
      if (sg_kept_at(parent, sg_kept_size(parent) - 1)->pid >= ea_->pid)
        context_->seen.insert(sg_parent_edge(accepted, entry));
    }
  }

  // Marks the extensions to which b's automorphisms bring x.
  void mark_images(const extension &x) const {
    for (const edge_place &place :
         context_->orbit.images(group_of_b_, {x.from, x.to})) {
      context_->poll.step();
      context_->seen.insert(
          x.to == -1 ? pendant_extension(b_id_, place.u, x.elabel, x.vlabel)
                     : closing_extension(b_id_, place.u, place.w, x.elabel));
    }
  }

  const subgraph *a_;
  const subgraph *b_;
  int b_id_;
  const sg_parent *ea_;
  pattern_group group_of_b_;
  join_context *context_;
  int elabel_;  // of a's extra edge
  int outside_; // b's vertex outside the core, or -1
};

} // namespace

edge_place sg_place_in_core(const sg_parent *entry) {
  return {entry->map[entry->u], entry->map[entry->v]};
}

void sg_join(int a, int b, const sg_parent *ea, const sg_parent *eb,
             std::span<const edge_place> images,
             const pattern_group &group_of_b, join_context *context) {
  join pair(a, b, ea, eb, group_of_b, context);
  for (const edge_place &image : images) {
    context->poll.step();
    pair.at(image);
  }
}

} // namespace kestro
