// The level-wise search: from the first edge to the last size with a pattern.
#pragma once

#include "mining/candidates.h"
#include "mining/seams.h"
#include "mining/statistics.h"

namespace kestro {

// What the search works on and reports to; everything is borrowed.
struct mining_run {
  int minsize;                   // smallest size to report, in edges
  int maxsize;                   // largest size to mine, in edges
  generation_options generation; // how candidates are generated
  level_receiver *receiver;
  candidate_counter *counter;
  statistics *stats;                  // with a table; counts every size mined
  const interruption *stop = nullptr; // ends the run; also for generation
};

// Where a search ended.
struct search_end {
  int last;  // last size tried, 0 when there is no frequent edge
  bool more; // larger patterns may exist: the size or the receiver ended it
};

// Mines all sizes up to maxsize or the last one with a pattern, or until the
// receiver has enough.  Once a size has been counted, the TID lists and rows of
// the level below it are freed.  Throws interrupted when stop says so before
// all work is done; every level that was complete has been received by then.  A
// counter has to look at stop by itself.
search_end mine_levels(const mining_run *run);

} // namespace kestro
