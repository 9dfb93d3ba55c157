// Child lists from the children's kept parents, and the groups of parents.

#include "mining/core_links.h"

#include "mining/expect_records.h"

namespace kestro {

static size_t index(int i) { return static_cast<size_t>(i); }

core_links::core_links(const sg_set *cores, const sg_set *children, int jobs,
                       const interruption *stop)
    : groups_(stop) {
  interruption_poll poll(stop, 4096);
  const parentage found = parentage_of(cores, children, &poll);
  list_children(found, &poll);
  invariant_.reserve(index(sg_set_size(cores)));
  for (int id = 0; id < sg_set_size(cores); id++) {
    expect_records(cores, id, record_part::head);
    poll.step();
    invariant_.push_back(sg_set_get(cores, id)->invariant);
  }
  // Rigid cores have no group to find, and only those of parents are asked for.
  groups_.expect(sg_set_size(cores));
  groups_.prepare_all(jobs, [&](int id) {
    const subgraph *core = sg_set_get(cores, id);
    return found.is_parent[index(id)] && !core->rigid ? core->g : nullptr;
  });
}

core_links::parentage core_links::parentage_of(const sg_set *cores,
                                               const sg_set *children,
                                               interruption_poll *poll) {
  parentage found;
  found.is_parent.assign(index(sg_set_size(cores)), 0);
  found.kept.reserve(index(sg_set_size(children)));
  for (int id = 0; id < sg_set_size(children); id++) {
    expect_records(children, id, record_part::parents);
    const subgraph *child = sg_set_get(children, id);
    poll->step(1 + sg_parent_size(child));
    for (int l = 0; l < sg_parent_size(child); l++)
      found.is_parent[index(sg_parent_at(child, l)->pid)] = 1;
    found.kept.push_back({-1, -1});
    for (int i = 0; i < sg_kept_size(child); i++)
      found.kept.back()[index(i)] = sg_kept_at(child, i)->pid;
  }
  return found;
}

// Counts the children of each core, then gives each list its place.
void core_links::list_children(const parentage &of, interruption_poll *poll) {
  const size_t cores = of.is_parent.size();
  starts_.assign(cores + 1, 0);
  for (const std::array<int, 2> &kept : of.kept)
    for (const int core : kept)
      if (core != -1)
        starts_[index(core)]++;
  int end = 0;
  for (int &start : starts_)
    start = end += start;
  children_.resize(index(end));
  for (size_t id = of.kept.size(); id-- > 0;) {
    poll->step();
    for (const int core : of.kept[id])
      if (core != -1)
        children_[index(--starts_[index(core)])] = static_cast<int>(id);
  }
}

} // namespace kestro
