// The level-wise search: from the transactions to the last size with a pattern.
#pragma once

#include "driver/seams.h"

namespace kestro {

// What the search works on and reports to; everything is borrowed.
struct mining_run {
  const ksstack *transactions; // graph list
  int edge_labels;             // distinct ones
  int vertex_labels;           // distinct ones
  int minsup;                  // transactions, at least 1
  int minsize;                 // smallest size to report, in edges
  int maxsize;                 // largest size to mine, in edges
  int jobs;                    // threads to generate candidates on
  level_receiver *receiver;
  candidate_counter *counter;
  progress_listener *progress;
};

// Mines all sizes up to maxsize or the last one with a pattern.  Returns the
// last size tried, 0 when there is no frequent edge.
int mine_levels(const mining_run *run);

} // namespace kestro
