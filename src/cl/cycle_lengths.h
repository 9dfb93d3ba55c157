// How long the cycles of a graph are.
#pragma once

#include <cstdint>

#include "base/xmalloc.h"
#include "graph/graph.h"

namespace kestro {

// Lengths of cycles as a set of bits: bit n is that of n vertices, the last one
// that of all lengths from 63 on.
using cycle_lengths = uint64_t;
constexpr cycle_lengths length_bit(int vertices) {
  return cycle_lengths{1} << (vertices < 63 ? vertices : 63);
}

// Finds the lengths of all cycles that visit no vertex twice, in one component
// of a graph after another.
class cycle_lengths_finder {
public:
  // The most independent cycles of a component; with more of them the number of
  // cycles grows without measure.
  static constexpr int most_cycles = 6;

  // Those of a component of g's core, which is what is left when leaves are
  // taken away until there are none; it has 2 to most_cycles independent
  // cycles. degree gives by vertex of g the neighbours in the core, 0 outside
  // of it.
  cycle_lengths find(const graph *g, const xvector<int> &component,
                     const xvector<int> &degree);

private:
  // From one vertex of three or more neighbours to the next one.
  struct way {
    int to; // its number
    int length;
  };
  void follow(const graph *g, const xvector<int> &degree, int from, int j);
  void add_pairs(size_t from);
  void go_on(size_t from, int length, uint32_t met);

  cycle_lengths lengths_ = 0;
  xvector<int> number_;   // by vertex, of those with three neighbours or more
  xvector<int> joints_;   // these vertices
  xvector<way> ways_;     // from one joint after another
  xvector<size_t> first_; // by joint, where its ways start; the end
  size_t start_ = 0;      // the joint that the cycles start at
};

} // namespace kestro
