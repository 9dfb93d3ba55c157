// Children by parent and edge.
//
// An edge of a parent can be placed in as many ways as the parent has
// automorphisms; every image is entered, so a look-up needs no search. Patterns
// without links have no entries.

#include "mining/child_table.h"

#include "mining/links.h"

namespace kestro {

child_table::child_table(const sg_set *children, const sg_set *cores,
                         automorphism_cache *automorphisms,
                         const interruption *stop)
    : map_(stop) {
  interruption_poll poll(stop, 4096);
  xvector<int> first(static_cast<size_t>(sg_set_size(cores)), -1);
  for (int id = 0; id < sg_set_size(cores); id++) {
    const subgraph *core = sg_set_get(cores, id);
    if (!core->rigid)
      first[static_cast<size_t>(id)] =
          automorphism_cache_find(automorphisms, id, core->g, &poll);
  }
  size_t links = 0;
  for (int id = 0; id < sg_set_size(children); id++)
    links += static_cast<size_t>(sg_link_size(sg_set_get(children, id)));
  map_.reserve(links); // most have one place only
  for (int id = 0; id < sg_set_size(children); id++) {
    const subgraph *child = sg_set_get(children, id);
    for (int l = 0; l < sg_link_size(child); l++) {
      const sg_link *link = sg_link_at(child, l);
      const extension edge = sg_link_edge(child, link);
      int i = first[static_cast<size_t>(link->pid)];
      poll.step();
      if (i == -1) {
        map_.insert(edge, {id, l, -1});
        continue;
      }
      for (const int *perm;
           (perm = automorphism_cache_perm(automorphisms, i, link->pid)) !=
           nullptr;
           i++) {
        poll.step();
        map_.insert(image_of(edge, perm), {id, l, i});
      }
    }
  }
}

} // namespace kestro
