// The patterns of a level by parent and added edge.
#pragma once

#include "mining/automorphisms.h"
#include "mining/extension_map.h"
#include "mining/sg_set.h"

namespace kestro {

// A pattern found as one of its parents plus an edge.
struct found_child {
  int child;        // its id in the level
  int link;         // the index of its link that leads to the parent
  int automorphism; // the entry of the cache whose permutation of the parent
                    // brings that link's edge to the place asked for; -1 for
                    // the identity of a rigid parent
};

// For every parent and every edge such that the parent plus the edge is a
// pattern of the level: that pattern.
class child_table {
public:
  // children is the level, cores the level of their parents; the automorphisms
  // of all cores that are not rigid are entered into the cache.
  child_table(const sg_set *children, const sg_set *cores,
              automorphism_cache *automorphisms,
              const interruption *stop = nullptr);

  // The pattern that x, an extension of a core, is; null when it is none of the
  // level.
  const found_child *find(const extension &x) const { return map_.find(x); }

private:
  extension_map<found_child> map_;
};

} // namespace kestro
