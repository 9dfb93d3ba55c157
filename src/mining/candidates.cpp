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
#include "mining/expect_records.h"
#include "mining/parents.h"

namespace kestro {

namespace {

// Joins the children of cores on one thread.
struct joiner {
  joiner(const sg_set *children, const core_links *cores,
         const child_table *table, seen_extensions *seen, int worker,
         const generation_options &options)
      : derived(children, table),
        registry(
            children,
            labeller(options.stabilizer_threshold, options.kind, options.stop),
            &derived, options.stop),
        context(children, cores, &registry, seen, worker, options.stop) {
    registry.accepted.use(options.chunks);
  }

  derived_parents derived;
  registration registry;
  join_context context;
};

} // namespace

generation sg_generate_candidates(const sg_set *children, const sg_set *cores,
                                  const generation_options &options) {
  return sg_generate_candidates(
      children, core_links(cores, children, options.jobs, options.stop),
      options);
}

generation sg_generate_candidates(const sg_set *children,
                                  const core_links &cores,
                                  const generation_options &options) {
  const child_table table(children, &cores, options.stop);
  const int workers = worker_count(options.jobs, cores.size());
  seen_extensions seen(children, &cores, workers, options.stop);
  // A joiner belongs to the thread that makes and ends it.
  xvector<std::unique_ptr<joiner>> joiners(static_cast<size_t>(workers));
  xvector<candidate_set> accepted;
  for (int w = 0; w < workers; w++)
    accepted.emplace_back(options.stop).use(options.chunks);
  xvector<registration_counts> counted(static_cast<size_t>(workers));
  parallel_for(
      workers, cores.size(),
      [&](int worker, int p) {
        std::unique_ptr<joiner> &own = joiners[static_cast<size_t>(worker)];
        if (!own)
          own = std::make_unique<joiner>(children, &cores, &table, &seen,
                                         worker, options);
        own->context.join_children_of(p);
      },
      [&](int worker) {
        const size_t w = static_cast<size_t>(worker);
        if (!joiners[w])
          return;
        accepted[w] = std::move(joiners[w]->registry.accepted);
        counted[w] = joiners[w]->registry.counts;
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
  const sg_set *made = generated.candidates.get();
  for (int i = 0; i < sg_set_size(made); i++) {
    expect_records(made, i, record_part::head);
    generated.order_dependent += !sg_set_get(made, i)->invariant;
  }
  KESTRO_STRUCTURE(sg_set_check(made));
  return generated;
}

edge_place sg_place_in_core(const sg_parent *entry) {
  return {entry->image(entry->u), entry->image(entry->v)};
}

join_context::join_context(const sg_set *children, const core_links *cores,
                           registration *registry, seen_extensions *seen,
                           int worker, const interruption *stop)
    : poll(stop, 2048), patterns_(children), cores_(cores), registry_(registry),
      seen_(seen), worker_(worker), groups_(stop) {}

// The vertex of a pattern outside its core, -1 when the core has them all.  It
// is the later end of the extra edge: degrees descend along a form, and the
// other end has more than this one edge.
static int vertex_outside(const sg_parent *entry) {
  assert(entry->image(entry->u) != -1);
  return entry->image(entry->v) == -1 ? entry->v : -1;
}

void join_context::add_child(int id, const sg_parent *entry) {
  const graph *g = sg_set_get(patterns_, id)->g;
  const int outside = vertex_outside(entry);
  child_.push_back(
      {id, g, sg_place_in_core(entry), graph_edge_label(g, entry->u, entry->v),
       outside, outside == -1 ? -1 : g->vlabel[outside], from_core_.size()});
  from_core_.resize(from_core_.size() + static_cast<size_t>(entry->vs));
  int16_t *from_core = from_core_.data() + child_.back().from_core;
  for (int16_t i = 0; i < entry->vs; i++)
    if (const int in_core = entry->image(i); in_core != -1)
      from_core[in_core] = i;
}

void join_context::add_offer(const extension &x, size_t child) {
  offers_.push_back({seen_->expect(x), child});
}

void join_context::close(size_t b, int u, int w, int elabel) {
  const joined_child &onto = child_[b];
  if (!graph_has_edge(onto.g, u, w))
    add_offer(closing_extension(onto.id, u, w, elabel), b);
}

// Up to two candidates for each place of a's edge.
void join_context::collect(const joined_child &a, size_t b,
                           std::span<const edge_place> places) {
  const joined_child &onto = child_[b];
  const int16_t *from_core = from_core_.data() + onto.from_core;
  for (const edge_place &place : places) {
    const int u = from_core[place.u];
    if (place.w != -1) {
      close(b, u, from_core[place.w], a.elabel);
      continue;
    }
    add_offer(pendant_extension(onto.id, u, a.elabel, a.vlabel), b);
    if (onto.outside != -1 && onto.vlabel == a.vlabel)
      close(b, u, onto.outside, a.elabel);
  }
}

// With fewer images of a place than this, finding the group of the pattern that
// is built onto costs more than it saves: it spares at most all images but one.
static constexpr size_t many = 3;

void join_context::join_children_of(int core) {
  // What the joins of the next cores read is on its way meanwhile.
  if (core + 1 < cores_->size())
    for (const int id : cores_->children(core + 1))
      expect_rest(sg_set_get(patterns_, id), record_part::parents);
  if (core + 2 < cores_->size())
    for (const int id : cores_->children(core + 2))
      expect_head(sg_set_get(patterns_, id));
  const std::span<const int> ids = cores_->children(core);
  if (ids.empty())
    return;
  seen_->begin_core(worker_, core);
  child_.clear();
  from_core_.clear();
  for (const int id : ids)
    add_child(id, sg_find_kept(sg_set_get(patterns_, id), core));
  const pattern_group group = cores_->group(core);
  groups_.expect(group.count > 0 ? static_cast<int>(ids.size()) : 0);
  for (size_t i = 0; i < child_.size(); i++) {
    const std::span<const edge_place> places =
        orbit_.images(group, child_[i].place, &poll);
    poll.step(static_cast<int64_t>((child_.size() - i) * places.size()));
    for (size_t j = i; j < child_.size(); j++)
      collect(child_[i], j, places);
    offer_all(places.size() >= many);
  }
}

void join_context::join(int a, int b, const sg_parent *ea, const sg_parent *eb,
                        std::span<const edge_place> places) {
  seen_->begin_core(worker_, ea->pid);
  child_.clear();
  from_core_.clear();
  add_child(a, ea);
  add_child(b, eb);
  poll.step(static_cast<int64_t>(places.size()));
  collect(child_[0], 1, places);
  offer_all(false);
}

// Offers the candidates that were not seen before.  with_groups: the same place
// may come by several ways, which a child's automorphisms tell.
void join_context::offer_all(bool with_groups) {
  for (const auto &[key, child] : offers_) {
    if (!seen_->insert(key))
      continue;
    const extension &x = key.x;
    const subgraph *accepted = sg_offer_extension(x, registry_);
    if (accepted && accepted->invariant)
      mark_seen(accepted);
    if (with_groups && registry_->invariant_outcome)
      mark_images(x, group_of_child(child));
  }
  offers_.clear();
}

// The group of a child of the core.
pattern_group join_context::group_of_child(size_t i) {
  const subgraph *sg = sg_set_get(patterns_, child_[i].id);
  if (sg->rigid)
    return {};
  groups_.prepare(static_cast<int>(i), sg->g);
  return groups_.at(static_cast<int>(i));
}

// Marks the other extensions that give an accepted candidate: a parent of it
// and the edge that the parent lacks.  Since its form does not depend on how it
// is built, they would only give duplicates.  A parent that is extended no
// further needs no mark.
void join_context::mark_seen(const subgraph *accepted) {
  const int core = seen_->earliest_core();
  marks_.clear();
  for (int l = 0; l < sg_parent_size(accepted); l++) {
    const sg_parent *entry = sg_parent_at(accepted, l);
    if (!seen_->is_extended_from(core, entry->pid))
      continue;
    marks_.push_back(seen_->expect(sg_parent_edge(accepted, entry)));
  }
  for (const seen_extensions::key &mark : marks_)
    seen_->insert(mark);
}

// Marks the extensions to which a child's automorphisms bring x.
void join_context::mark_images(const extension &x, const pattern_group &group) {
  if (group.count == 0)
    return;
  for (const edge_place &place : images_.images(group, {x.from, x.to}, &poll)) {
    poll.step();
    seen_->insert(
        x.to == -1 ? pendant_extension(x.pattern, place.u, x.elabel, x.vlabel)
                   : closing_extension(x.pattern, place.u, place.w, x.elabel));
  }
}

void sg_join(int a, int b, const sg_parent *ea, const sg_parent *eb,
             std::span<const edge_place> places, join_context *context) {
  context->join(a, b, ea, eb, places);
}

} // namespace kestro
