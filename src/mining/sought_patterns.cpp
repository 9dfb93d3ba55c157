// The search, led by a list.
//
// What is contained in a sought pattern is sought, too: a level-wise search
// comes to a pattern only through its parts.  With them the list is closed
// downward, so every sought pattern that occurs comes up as a candidate.  Other
// candidates are dropped before their transactions are looked at; edges and
// paths of two are counted all at once, and dropped afterwards.

#include "mining/sought_patterns.h"

#include <string>
#include <utility>

#include <kestro/error.h>

#include "base/interruption.h"
#include "graph/compacted.h"
#include "graph/connectivity.h"
#include "graph/edge_marks.h"

namespace kestro {

static bool is_connected(const graph *g) {
  xvector<int> order(static_cast<size_t>(g->vs));
  return graph_bfs_order(g, order.data()) == g->vs;
}

sought_patterns::sought_patterns(const graph_list *patterns,
                                 int stabilizer_threshold,
                                 const interruption *stop)
    : forms_(stabilizer_threshold, form::exact, stop), table_(stop) {
  interruption_poll poll(stop);
  for (int i = 0; i < patterns->count; i++) {
    poll.step();
    const graph *g = graph_list_at(patterns, i);
    if (g->es == 0)
      continue;
    if (!is_connected(g))
      throw error("pattern " + std::to_string(i) + " is not connected");
    add(g);
  }
  for (size_t i = 0; i < records_.size(); i++) {
    poll.step();
    add_parts(records_[i]->g);
  }
}

// Adds what is enabled of g, unless it is in.
void sought_patterns::add(const graph *g) {
  if (!scratch_ || scratch_->parents_room < g->es / 2)
    scratch_.reset(sg_create(g->es, g->es / 2 + 1));
  graph *const form = scratch_->g;
  graph_copy_compacted(g, form);
  forms_.canonicalize(form);
  if (table_.find(scratch_.get()))
    return;
  subgraph *const record =
      sg_light_copy(scratch_.get(), copies_.take(sg_size(form->es, form->vs)));
  records_.push_back(record);
  table_.insert(record);
}

void sought_patterns::add_parts(graph *g) {
  if (g->es == 2)
    return; // what is left of an edge is a vertex
  for (const removable_edge &edge : edges_.of(g)) {
    graph_mark_edge_between(g, edge.u, edge.w);
    add(g);
    graph_enable_edge_between(g, edge.u, edge.w);
  }
}

void sought_counter::drop_others(sg_set *level) const {
  interruption_poll poll(stop_);
  for (sg_ptr &sg : sg_set_take_records(level)) {
    poll.step();
    if (sought_.contains(sg.get()))
      sg_set_push(level, std::move(sg));
  }
  sg_set_compact(level, stop_);
}

sg_set_ptr sought_counter::edges() {
  sg_set_ptr level = counter_->edges();
  drop_others(level.get());
  return level;
}

sg_set_ptr sought_counter::double_edges(const sg_set *edges) {
  sg_set_ptr level = counter_->double_edges(edges);
  drop_others(level.get());
  return level;
}

void sought_counter::bound(sg_set *cand, const sg_set *prev,
                           work_watcher *watcher) {
  drop_others(cand);
  counter_->bound(cand, prev, watcher);
}

void sought_counter::count(sg_set *cand, const sg_set *prev,
                           work_watcher *watcher) {
  counter_->count(cand, prev, watcher);
}

} // namespace kestro
