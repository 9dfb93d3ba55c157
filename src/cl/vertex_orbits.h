// The orbits of vertices under automorphisms that are found one by one.
#pragma once

#include <numeric>

#include "base/xmalloc.h"

namespace kestro {

class vertex_orbits {
public:
  // Every one of n vertices an orbit of its own.
  void reset(int n) {
    link_.resize(static_cast<size_t>(n));
    std::iota(link_.begin(), link_.end(), 0);
  }

  // Joins the orbits of each vertex and its image under one more automorphism.
  void join(const xvector<int> &perm) {
    for (size_t u = 0; u < perm.size(); u++)
      join(static_cast<int>(u), perm[u]);
  }
  // The same for one vertex and its image.
  void join(int u, int w) { at(first_of(u)) = first_of(w); }

  bool same(int u, int w) { return first_of(u) == first_of(w); }

private:
  int &at(int u) { return link_[static_cast<size_t>(u)]; }

  // The vertex that stands for u's orbit.
  int first_of(int u) {
    while (at(u) != u)
      u = at(u) = at(at(u));
    return u;
  }

  xvector<int> link_; // by vertex: another one of its orbit, or itself
};

} // namespace kestro
