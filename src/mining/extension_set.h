// The joins made so far: which edge was built onto which pattern.
#pragma once

#include "base/xmalloc.h"
#include "mining/subgraph.h"

namespace kestro {

// A pattern plus one edge, as a join makes it.
struct extension {
  const subgraph *pattern; // what is extended
  int from;                // its vertex at which the edge lands
  int to;                  // its vertex at the other end, -1 for a new vertex
  int elabel;
  int vlabel; // of the new vertex, -1 for none
  bool operator==(const extension &) const = default;
};

// A set of extensions in a table with open addressing.
class extension_set {
public:
  // Adds x; false when it is there already.
  bool insert(const extension &x);

private:
  size_t place_of(const extension &x) const;
  void grow();

  xvector<extension> table_; // pattern null marks a free place
  size_t count_ = 0;
};

} // namespace kestro
