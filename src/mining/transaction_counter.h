// Counting candidates against the transactions in memory.
#pragma once

#include <optional>

#include "graph/graph_list.h"
#include "mining/seams.h"
#include "mining/support.h"

namespace kestro {

class transaction_counter : public candidate_counter {
public:
  // Borrows transactions, whose labels are below edge_labels and vertex_labels;
  // minsup is at least 1.  All counting throws interrupted when stop, which may
  // be null, says so.
  transaction_counter(const graph_list *transactions, int edge_labels,
                      int vertex_labels, int minsup, int jobs,
                      const interruption *stop = nullptr)
      : transactions_(transactions), edge_labels_(edge_labels),
        vertex_labels_(vertex_labels), minsup_(minsup), jobs_(jobs),
        stop_(stop) {}
  sg_set_ptr edges() override;
  sg_set_ptr double_edges(const sg_set *edges) override;
  void bound(sg_set *cand, const sg_set *prev,
             work_watcher *watcher = nullptr) override;
  void count(sg_set *cand, const sg_set *prev,
             work_watcher *watcher = nullptr) override;

private:
  const graph_list *transactions_;
  int edge_labels_;
  int vertex_labels_;
  int minsup_;
  int jobs_;
  const interruption *stop_;
  std::optional<support_counter> counter_; // made for the first candidates
};

} // namespace kestro
