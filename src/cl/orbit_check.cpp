// Where every cell that a path sets a vertex apart from is an orbit of the
// automorphisms that fix what was set apart before, all leaves of the tree are
// images of one another and show the same matrix.  That is checked from the
// path's leaf upwards: below a vertex of the cell all is known to be alike, so
// any leaf under it shows whether the vertex is in the orbit.  What is found
// fixes the vertices set apart before, so it spares the leaves of all vertices
// that it joins into one orbit.

#include "cl/orbit_check.h"

#include "cl/cell_image.h"

namespace kestro {

bool orbit_check::run() {
  colouring c = *start_;
  while (c.cells < g_->vs) {
    path_.push_back(c);
    split_first_open(&c);
  }
  leaf_ = c.order;
  orbits_.reset(g_->vs);
  path_.push_back(c);
  for (size_t level = path_.size() - 1; level-- > 0;)
    if (!is_orbit(level))
      return false;
  return true;
}

int orbit_check::rows_set_apart() const {
  return colouring_first_open(&path_[path_.size() - 2], 0) + 1;
}

void orbit_check::split_first_open(colouring *c) const {
  const int cell = colouring_first_open(c, 0);
  colouring_individualise(c, g_, c->order[static_cast<size_t>(cell)], work_);
}

// Whether the first open cell of a node of the path, below which all is known
// to be alike, is an orbit.
bool orbit_check::is_orbit(size_t level) {
  const colouring &node = path_[level];
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
    if (!has_image_of_leaf(&c, level + 1))
      return false;
    automorphisms_.push_back(image_);
    orbits_.join(image_);
  }
  return true;
}

// Whether a leaf under c is an image of the path's leaf; c's node is as deep as
// the path's node at a level.  All cells of both are alike if it is.
bool orbit_check::has_image_of_leaf(colouring *c, size_t level) {
  for (;; level++) {
    const colouring &node = path_[level];
    if (!have_equal_cells(node, *c))
      return false;
    match_cells(node, *c, &image_);
    if (is_automorphism())
      return true;
    if (c->cells == g_->vs)
      return false;
    split_first_open(c);
  }
}

// Whether image_, which takes cells to cells, is one.
bool orbit_check::is_automorphism() const {
  for (int u = 0; u < g_->vs; u++) {
    const int *row = cells_.row(image_[static_cast<size_t>(u)]);
    for (int j = g_->v[u]; j < g_->v[u + 1]; j++)
      if (row[image_[static_cast<size_t>(g_->e[j])]] != g_->elabel[j] + 1)
        return false;
  }
  return true;
}

} // namespace kestro
