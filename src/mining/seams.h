// Where the level loop meets the outside: who takes what it finds, and who
// knows supports.
#pragma once

#include <kestro/progress.h>

#include "base/parallel.h"
#include "mining/sg_set.h"

namespace kestro {

// Receives what is found (library/mine.cpp).
class level_receiver {
public:
  virtual ~level_receiver() = default;
  // All candidates of one size, sorted, before any counting.
  virtual void candidates(const sg_set *set) = 0;
  // A level of a reported size, sorted, with supports and parents, not empty;
  // borrowed for the call.  False ends the run with this level.
  virtual bool level(const sg_set *set) = 0;
  // How far the run is, at sizes that are not reported too.
  virtual void advanced(const progress &now) = 0;
};

// Who knows supports: bound and exact count over the transactions in memory
// (mining/transaction_counter.h).  The sets it returns, or leaves after
// count(), are sorted, and every record in them has its exact count.  Whether
// records have TID lists is up to the counter.
class candidate_counter {
public:
  virtual ~candidate_counter() = default;
  // The frequent one-edge patterns.
  virtual sg_set_ptr edges() = 0;
  // The frequent two-edge patterns, with their parents among the edges.
  virtual sg_set_ptr double_edges(const sg_set *edges) = 0;
  // Drops candidates that cannot be frequent, as far as that can be seen
  // without counting; prev is the level below.
  virtual void bound(sg_set *cand, const sg_set *prev,
                     work_watcher *watcher) = 0;
  // Drops those that are not frequent.  May free the TID lists and rows of
  // prev; afterwards the loop frees what is left of them.
  virtual void count(sg_set *cand, const sg_set *prev,
                     work_watcher *watcher) = 0;
};

} // namespace kestro
