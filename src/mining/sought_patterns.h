// Mining only what is sought.
#pragma once

#include <memory>
#include <utility>

#include "base/arena.h"
#include "cl/canonical.h"
#include "graph/graph_list.h"
#include "graph/removable_edges.h"
#include "mining/record_table.h"
#include "mining/seams.h"

namespace kestro {

// Patterns and the connected parts of them that have an edge, in the exact
// form.
class sought_patterns {
public:
  // Copies the graphs, whose vertices may come in any order; those without an
  // edge are passed over.  Costs a canonical form for each removable edge of
  // each pattern and part.  Throws error for a graph that is not connected, and
  // interrupted when stop, which may be null, says so.
  sought_patterns(const graph_list *patterns, int stabilizer_threshold,
                  const interruption *stop = nullptr);

  // Whether sg, whose graph is in the exact form, is one of them.
  bool contains(const subgraph *sg) const { return table_.find(sg) != nullptr; }
  int size() const { return static_cast<int>(records_.size()); }

private:
  void add(const graph *g);
  void add_parts(graph *g);

  labeller forms_;
  removable_edges edges_;
  sg_ptr scratch_;
  arena copies_;
  record_table table_;
  xvector<subgraph *> records_; // in the order in which they were added
};

// Another counter's work on the candidates that are sought; all others have a
// support of 0.
class sought_counter : public candidate_counter {
public:
  // Throws as sought_patterns does.
  sought_counter(const graph_list *patterns, int stabilizer_threshold,
                 std::unique_ptr<candidate_counter> counter,
                 const interruption *stop = nullptr)
      : sought_(patterns, stabilizer_threshold, stop),
        counter_(std::move(counter)), stop_(stop) {}

  sg_set_ptr edges() override;
  sg_set_ptr double_edges(const sg_set *edges) override;
  void bound(sg_set *cand, const sg_set *prev, work_watcher *watcher) override;
  void count(sg_set *cand, const sg_set *prev, work_watcher *watcher) override;

private:
  void drop_others(sg_set *level) const;

  sought_patterns sought_;
  std::unique_ptr<candidate_counter> counter_;
  const interruption *stop_;
};

} // namespace kestro
