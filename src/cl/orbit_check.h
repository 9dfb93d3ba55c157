// Whether all leaves of the individualisation tree are images of one another.
#pragma once

#include "cl/colouring.h"
#include "cl/label_cells.h"
#include "cl/vertex_orbits.h"

namespace kestro {

// One path of the tree, along which the first vertex of the first open cell is
// set apart until all are, and whether all other paths are its images.  All
// arguments are borrowed; start is refined already.
class orbit_check {
public:
  orbit_check(const colouring *start, const graph *g, const label_cells &cells,
              refinement_work *work)
      : start_(start), g_(g), cells_(cells), work_(work),
        image_(start->order.size()) {}

  // Follows the path; false when some cell of it is no orbit.  The answer does
  // not depend on the order the vertices came in.  Costs a path for every
  // vertex of the cells on it that no automorphism found before brings there;
  // when it returns true, these are fewer than the vertices.
  bool run();

  // The arrangement the path ends with; all others end with its images when run
  // returned true.
  const xvector<int> &leaf() const { return leaf_; }
  // Its rows up to the last vertex set apart; one must have been.
  int rows_set_apart() const;
  // The automorphisms found, by vertex its image.  With exchanges of twins they
  // generate all there are, if run returned true.
  const xvector<xvector<int>> &automorphisms() const { return automorphisms_; }

private:
  void split_first_open(colouring *c) const;
  bool is_orbit(size_t level);
  bool has_image_of_leaf(colouring *c, size_t level);
  bool is_automorphism() const;

  const colouring *start_;
  const graph *g_;
  const label_cells &cells_;
  refinement_work *work_;
  xvector<colouring> path_; // its nodes, the start first, the leaf last
  xvector<int> leaf_;
  xvector<int> image_;   // scratch
  vertex_orbits orbits_; // of what was found
  xvector<xvector<int>> automorphisms_;
};

} // namespace kestro
