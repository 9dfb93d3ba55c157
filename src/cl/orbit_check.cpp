// Where every cell that a path sets a vertex apart from is an orbit of the
// automorphisms that fix what was set apart before, all leaves of the tree are
// images of one another and show the same matrix.  That is checked from the
// path's leaf upwards: below a vertex of the cell all is known to be alike, so
// any leaf under it shows whether the vertex is in the orbit.  What is found
// fixes the vertices set apart before, so it spares the leaves of all vertices
// that it joins into one orbit.

#include "cl/orbit_check.h"

namespace kestro {

bool orbit_check::run() {
  colouring c = *start_;
  while (c.cells < g_->vs) {
    path_.push_back(c);
    split_first_open(&c);
  }
  leaf_ = c.order;
  orbits_.reset(g_->vs);
  for (size_t level = path_.size(); level-- > 0;)
    if (!is_orbit(path_[level]))
      return false;
  return true;
}

int orbit_check::rows_set_apart() const {
  return colouring_first_open(&path_.back(), 0) + 1;
}

void orbit_check::split_first_open(colouring *c) const {
  const int cell = colouring_first_open(c, 0);
  colouring_individualise(c, g_, c->order[static_cast<size_t>(cell)], work_);
}

// Whether the first open cell of a node of the path, below which all is known
// to be alike, is an orbit.
bool orbit_check::is_orbit(const colouring &node) {
  const int cell = colouring_first_open(&node, 0);
  const int end = node.cell_end[static_cast<size_t>(cell)];
  const int chosen = node.order[static_cast<size_t>(cell)];
  for (int q = cell + 1; q < end; q++) {
    const int w = node.order[static_cast<size_t>(q)];
    if (orbits_.same(chosen, w))
      continue;
    if (cells_.are_twins(chosen, w)) {
      orbits_.join(chosen, w);
      continue;
    }
    colouring c = node;
    colouring_individualise(&c, g_, w, work_);
    while (c.cells < g_->vs)
      split_first_open(&c);
    if (!shows_the_leaf(c.order))
      return false;
    automorphisms_.push_back(image_);
    orbits_.join(image_);
  }
  return true;
}

// Whether an arrangement shows the same matrix as the leaf.
bool orbit_check::shows_the_leaf(const xvector<int> &order) {
  for (size_t i = 0; i < order.size(); i++)
    image_[static_cast<size_t>(leaf_[i])] = order[i];
  for (size_t i = 0; i < order.size(); i++) {
    const int *row = cells_.row(order[i]);
    const int u = leaf_[i];
    for (int j = g_->v[u]; j < g_->v[u + 1]; j++)
      if (row[image_[static_cast<size_t>(g_->e[j])]] != g_->elabel[j] + 1)
        return false;
  }
  return true;
}

} // namespace kestro
