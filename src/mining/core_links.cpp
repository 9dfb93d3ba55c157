// Child lists, copied out of the records, and the groups of parents.

#include "mining/core_links.h"

namespace kestro {

core_links::core_links(const sg_set *cores, const sg_set *children, int jobs,
                       const interruption *stop)
    : groups_(stop) {
  interruption_poll poll(stop, 4096);
  copy_lists(cores, &poll);
  find_groups(cores, children, jobs, &poll);
}

void core_links::copy_lists(const sg_set *cores, interruption_poll *poll) {
  const size_t n = static_cast<size_t>(sg_set_size(cores));
  starts_.reserve(n + 1);
  invariant_.reserve(n);
  starts_.push_back(0);
  for (int id = 0; id < sg_set_size(cores); id++) {
    const subgraph *core = sg_set_get(cores, id);
    poll->step(1 + sg_child_size(core));
    for (int i = 0; i < sg_child_size(core); i++)
      children_.push_back(sg_child_at(core, i));
    starts_.push_back(static_cast<int>(children_.size()));
    invariant_.push_back(core->invariant);
  }
}

// Rigid cores have no group to find, and only those of parents are asked for.
void core_links::find_groups(const sg_set *cores, const sg_set *children,
                             int jobs, interruption_poll *poll) {
  xvector<bool> needed(static_cast<size_t>(sg_set_size(cores)), false);
  for (int id = 0; id < sg_set_size(children); id++) {
    poll->step();
    const subgraph *sg = sg_set_get(children, id);
    for (int l = 0; l < sg_parent_size(sg); l++)
      needed[static_cast<size_t>(sg_parent_at(sg, l)->pid)] = true;
  }
  groups_.expect(sg_set_size(cores));
  groups_.prepare_all(jobs, [&](int id) {
    const subgraph *core = sg_set_get(cores, id);
    return needed[static_cast<size_t>(id)] && !core->rigid ? core->g : nullptr;
  });
}

} // namespace kestro
