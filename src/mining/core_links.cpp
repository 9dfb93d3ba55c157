// Child lists from the children's kept parents, and the groups of parents.

#include "mining/core_links.h"

#include "mining/expect_records.h"

namespace kestro {

static size_t index(int i) { return static_cast<size_t>(i); }

core_links::core_links(const sg_set *cores, const sg_set *children, int jobs,
                       const interruption *stop)
    : entries_(index(sg_set_size(cores)), 0), groups_(stop) {
  interruption_poll poll(stop, 4096);
  list_children(read_children(children, &poll), &poll);
  // Rigid cores have no group to find, and only those of parents are asked for.
  xvector<char> has_group;
  has_group.reserve(entries_.size());
  invariant_.reserve(entries_.size());
  for (int id = 0; id < sg_set_size(cores); id++) {
    expect_records(cores, id, record_part::head);
    poll.step();
    const subgraph *core = sg_set_get(cores, id);
    invariant_.push_back(core->invariant);
    has_group.push_back(entries(id) > 0 && !core->rigid);
  }
  groups_.expect(sg_set_size(cores));
  groups_.prepare_all(jobs, [&](int id) {
    return has_group[index(id)] ? sg_set_get(cores, id)->g : nullptr;
  });
}

// Counts the entries that tell of each core.
core_links::kept_parents core_links::read_children(const sg_set *children,
                                                   interruption_poll *poll) {
  kept_parents kept;
  kept.reserve(index(sg_set_size(children)));
  for (int id = 0; id < sg_set_size(children); id++) {
    expect_records(children, id, record_part::parents);
    const subgraph *child = sg_set_get(children, id);
    poll->step(1 + sg_parent_size(child));
    for (int l = 0; l < sg_parent_size(child); l++)
      entries_[index(sg_parent_at(child, l)->pid)]++;
    kept.push_back({-1, -1});
    for (int i = 0; i < sg_kept_size(child); i++)
      kept.back()[index(i)] = sg_kept_at(child, i)->pid;
  }
  return kept;
}

// Counts the children of each core, then gives each list its place.
void core_links::list_children(const kept_parents &kept,
                               interruption_poll *poll) {
  starts_.assign(entries_.size() + 1, 0);
  for (const std::array<int, 2> &parents : kept)
    for (const int core : parents)
      if (core != -1)
        starts_[index(core)]++;
  int end = 0;
  for (int &start : starts_)
    start = end += start;
  children_.resize(index(end));
  for (size_t id = kept.size(); id-- > 0;) {
    poll->step();
    for (const int core : kept[id])
      if (core != -1)
        children_[index(--starts_[index(core)])] = static_cast<int>(id);
  }
}

} // namespace kestro
