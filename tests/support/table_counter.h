// A counter for the level loop that has no transactions: all it knows is a
// table of supports.
#pragma once

#include <map>

#include "mining/seams.h"
#include "support/plain_generation.h"

namespace kestro {

// What is not in the table has a support of 0.  Records get no TID lists.
class table_counter : public candidate_counter {
public:
  // Enters the supports of a level.
  void learn(const sg_set *level);

  sg_set_ptr edges() override;
  sg_set_ptr double_edges(const sg_set *edges) override;
  // Drops nothing.
  void bound(sg_set *cand, const sg_set *prev, work_watcher *) override;
  void count(sg_set *cand, const sg_set *prev, work_watcher *) override;

private:
  std::map<graph_form, int> supports_; // by the arrays of canonical graphs
};

} // namespace kestro
