// Children by parent and edge.
//
// An edge of a parent can be placed wherever an automorphism of the parent
// brings it; every such place is entered once, so a look-up needs no search.
// The entry tells the generator by which the place was reached, so a way back
// to the first place gives an automorphism (a Schreier vector).

#include "mining/child_table.h"

#include "mining/parents.h"

namespace kestro {

static xvector<char> invariant_ones(const sg_set *level) {
  xvector<char> flags;
  flags.reserve(static_cast<size_t>(sg_set_size(level)));
  for (int id = 0; id < sg_set_size(level); id++)
    flags.push_back(sg_set_get(level, id)->invariant);
  return flags;
}

child_table::child_table(const sg_set *children, const sg_set *cores,
                         const pattern_groups *groups, const interruption *stop)
    : map_(stop), groups_(groups), children_(invariant_ones(children)),
      cores_(invariant_ones(cores)) {
  interruption_poll poll(stop, 4096);
  size_t entries = 0;
  for (int id = 0; id < sg_set_size(children); id++) {
    poll.step();
    entries += static_cast<size_t>(sg_parent_size(sg_set_get(children, id)));
  }
  map_.reserve(entries);    // most have one place only
  xvector<extension> edges; // of one child
  for (int id = 0; id < sg_set_size(children); id++) {
    const subgraph *child = sg_set_get(children, id);
    edges.clear();
    for (int l = 0; l < sg_parent_size(child); l++) {
      edges.push_back(sg_parent_edge(child, sg_parent_at(child, l)));
      map_.expect(edges.back());
    }
    for (int l = 0; l < sg_parent_size(child); l++) {
      poll.step();
      const extension &edge = edges[static_cast<size_t>(l)];
      if (map_.insert(edge, {id, l, -1})) // else all images are in, too
        enter_images(edge, {id, l, -1}, &poll);
    }
  }
}

// Enters the images of x, which is in.
void child_table::enter_images(const extension &x, const found_child &found,
                               interruption_poll *poll) {
  const pattern_group group = groups_->at(x.pattern);
  if (group.count == 0)
    return;
  entered_.assign(1, x);
  for (size_t i = 0; i < entered_.size(); i++) {
    poll->step(group.count);
    for (int k = 0; k < group.count; k++) {
      const extension image = image_of(entered_[i], group.perm(k));
      if (map_.insert(image, {found.child, found.entry, k}))
        entered_.push_back(image);
    }
  }
}

// The vertex that a permutation brings to u.
static int preimage(const int *perm, int u) {
  int i = 0;
  while (perm[i] != u)
    i++;
  return i;
}

void child_table::find_steps(extension x, xvector<const int *> *steps) const {
  steps->clear();
  const pattern_group group = groups_->at(x.pattern);
  for (int k; (k = map_.find(x)->generator) != -1;) {
    const int *perm = group.perm(k);
    steps->push_back(perm);
    const int from = preimage(perm, x.from);
    x = x.to == -1 ? pendant_extension(x.pattern, from, x.elabel, x.vlabel)
                   : closing_extension(x.pattern, from, preimage(perm, x.to),
                                       x.elabel);
  }
}

} // namespace kestro
