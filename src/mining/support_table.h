// Supports that are known already, for a search without transactions.
#pragma once

#include <algorithm>
#include <span>

#include "graph/graph_list.h"
#include "mining/seams.h"

namespace kestro {

// Patterns in the exact form, with their supports.  What is not among them has
// a support of 0, so all frequent ones have to be there.  Records get no TID
// lists and no rows.
class support_table : public candidate_counter {
public:
  // Copies the graphs; supports[i] is that of pattern i.  Counting is on jobs
  // threads; all throws interrupted when stop, which may be null, says so.
  // Throws error for two patterns that are equal.
  support_table(const graph_list *patterns, std::span<const int> supports,
                int minsup, int jobs, const interruption *stop = nullptr);

  sg_set_ptr edges() override;
  sg_set_ptr double_edges(const sg_set *edges) override;
  // Drops nothing: what is not in the table is dropped by the count.
  void bound(sg_set *cand, const sg_set *prev, work_watcher *watcher) override;
  void count(sg_set *cand, const sg_set *prev, work_watcher *watcher) override;

  // How many patterns of so many edges are frequent by the table, and of how
  // many edges the largest of them are, 0 for none.
  int frequent(int size) const;
  int largest() const {
    return std::max(static_cast<int>(levels_.size()), 1) - 1;
  }

private:
  // The known patterns of so many edges, sorted; null for none.
  const sg_set *known(int size) const;

  int jobs_;
  const interruption *stop_;
  xvector<sg_set_ptr> levels_; // by edges; those that are frequent
};

} // namespace kestro
