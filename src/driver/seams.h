// Where the level loop meets the outside.  A front end or an engine plugs in by
// implementing one of these; each has one implementation in the program.
#pragma once

#include "mining/sg_set.h"

namespace kestro {

// Who receives a finished level: the writers of the output files
// (driver/level_files.h).
class level_receiver {
public:
  virtual ~level_receiver() = default;
  // All candidates of one size, sorted, before any counting.
  virtual void candidates(const sg_set *set) = 0;
  // A level of a reported size, sorted, with supports and parents; borrowed for
  // the call.
  virtual void level(const sg_set *set) = 0;
};

// Who knows supports: bound and exact count over the transactions in memory
// (driver/transaction_counter.h).  What it makes of a level is sorted, and
// every record that stays has its exact count; TID lists are its own affair.
class candidate_counter {
public:
  virtual ~candidate_counter() = default;
  // The frequent one-edge patterns.
  virtual sg_set_ptr edges() = 0;
  // The frequent two-edge patterns, with their parents among the edges.
  virtual sg_set_ptr double_edges(const sg_set *edges) = 0;
  // Drops candidates that cannot be frequent, as many as are told cheaply; prev
  // is the level below.
  virtual void bound(sg_set *cand, const sg_set *prev) = 0;
  // Drops those that are not frequent.
  virtual void count(sg_set *cand, const sg_set *prev) = 0;
};

// Who is told of progress: the table rows on standard output
// (driver/live_table.h).  The counters of the size told are final as far as
// they are known.
class progress_listener {
public:
  virtual ~progress_listener() = default;
  // Some candidates of a reported size of 3 or more have passed the bound.
  virtual void candidates(int size) = 0;
  // The level of a reported size has been received.
  virtual void level(int size) = 0;
};

} // namespace kestro
