// The TID lists of a level, for intersecting them.
#pragma once

#include <cstdint>

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "mining/sg_set.h"

namespace kestro {

class tid_lists {
public:
  // Borrows level; dies with "something wrong" when a list is out of order.
  // Throws interrupted when stop, which may be null, says so.
  tid_lists(const sg_set *level, int transactions,
            const interruption *stop = nullptr);

  // Memory that intersections use one after another.
  struct workspace {
    xvector<int> parents; // ids
    xvector<int> common;
    xvector<int> narrowed;
    xvector<uint64_t> bits;
    interruption_poll poll; // a step costs the words or ids that it passes
  };

  // The transactions common to all parents of sg in the level, ascending, in
  // work->common; none where there are less than minsup.
  const xvector<int> &common_to_parents(const subgraph *sg, int minsup,
                                        workspace *work) const;

private:
  bool narrow(int pid, bool is_first, int minsup, workspace *work) const;
  void list_bits(workspace *work) const;

  const sg_set *level_;
  size_t words_;           // of a list as a set of bits
  xvector<uint64_t> bits_; // list after list; empty where lists are sparse
};

} // namespace kestro
