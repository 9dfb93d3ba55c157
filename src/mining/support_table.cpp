// The level loop's counter over a table.
//
// The records of the table are sorted as those of a level are, so a candidate
// is found by the same search as a parent is.  The first two levels are laid
// out anew: what the table has may not be in the form that they have in a
// search.

#include "mining/support_table.h"

#include <string>
#include <utility>

#include <kestro/error.h>

#include "base/error.h"
#include "base/interruption.h"
#include "mining/first_levels.h"

namespace kestro {

// A record without parents and sets, in the blocks of level.
static void add_known(const graph *g, int support, sg_set *level) {
  sg_ptr sg(sg_init(level->blocks.take(sg_size(g->es, g->vs)), g->es, g->vs));
  sg->in_arena = true;
  graph_copy_into(g, sg->g);
  sg->g->key = graph_key(sg->g);
  sg->count = support;
  sg_set_push(level, std::move(sg));
}

static void refuse_repeats(const sg_set *level) {
  for (int i = 1; i < sg_set_size(level); i++)
    if (sg_compare(sg_set_get(level, i - 1), sg_set_get(level, i)) == 0)
      throw error("two of the known patterns of " +
                  std::to_string(sg_set_get(level, i)->g->es / 2) +
                  " edges are equal");
}

support_table::support_table(const graph_list *patterns,
                             std::span<const int> supports, int minsup,
                             int jobs, const interruption *stop)
    : jobs_(jobs), stop_(stop) {
  interruption_poll poll(stop);
  for (int i = 0; i < patterns->count; i++) {
    poll.step();
    const graph *g = graph_list_at(patterns, i);
    const int support = supports[static_cast<size_t>(i)];
    if (g->es == 0 || support < minsup)
      continue;
    const auto size = static_cast<size_t>(g->es / 2);
    if (levels_.size() <= size)
      levels_.resize(size + 1);
    if (!levels_[size])
      levels_[size].reset(sg_set_create());
    add_known(g, support, levels_[size].get());
  }
  for (const sg_set_ptr &level : levels_)
    if (level) {
      sg_set_sort(level.get(), stop);
      refuse_repeats(level.get());
    }
}

const sg_set *support_table::known(int size) const {
  return static_cast<size_t>(size) < levels_.size()
             ? levels_[static_cast<size_t>(size)].get()
             : nullptr;
}

int support_table::frequent(int size) const {
  const sg_set *level = known(size);
  return level ? sg_set_size(level) : 0;
}

// Takes a record of the search's own over with the support of a known one, if
// that is in the same form.
static void add_as_known(const subgraph *known, sg_ptr made, sg_set *level) {
  if (sg_compare(known, made.get()) != 0)
    return;
  ksstack_free(std::exchange(made->tid, nullptr));
  made->count = known->count;
  sg_set_push(level, std::move(made));
}

sg_set_ptr support_table::edges() {
  sg_set_ptr level(sg_set_create());
  for (int i = 0; i < frequent(1); i++) {
    const subgraph *sg = sg_set_get(known(1), i);
    const graph *g = sg->g;
    add_as_known(
        sg, sg_ptr(sg_create_edge(g->vlabel[0], g->vlabel[1], g->elabel[0])),
        level.get());
  }
  return level;
}

static bool has_edge(const sg_set *edges, int la, int lb, int e) {
  const sg_ptr sg(sg_create_edge(la, lb, e));
  return sg_set_find(edges, sg.get()) != -1;
}

sg_set_ptr support_table::double_edges(const sg_set *edges) {
  sg_set_ptr level(sg_set_create());
  for (int i = 0; i < frequent(2); i++) {
    const subgraph *sg = sg_set_get(known(2), i);
    const graph *g = sg->g;
    const int *const v = g->vlabel;
    const int *const e = g->elabel;
    // A path by its centre, vertex 0, both of whose edges are known.
    if (g->vs != 3 || !has_edge(edges, v[0], v[1], e[0]) ||
        !has_edge(edges, v[0], v[2], e[1]))
      continue;
    sg_ptr made(sg_create_double_edge(e[0], e[1], v[1], v[2], v[0]));
    setup_double_edge_subgraph_parent_info(made.get(), edges);
    add_as_known(sg, std::move(made), level.get());
  }
  return level;
}

void support_table::bound(sg_set *, const sg_set *, work_watcher *) {}

void support_table::count(sg_set *cand, const sg_set *prev,
                          work_watcher *watcher) {
  static_cast<void>(prev);
  const sg_set *const level =
      known(sg_set_size(cand) ? sg_set_get(cand, 0)->g->es / 2 : 0);
  xvector<sg_ptr> records = sg_set_take_records(cand);
  const int n = static_cast<int>(records.size());
  xvector<interruption_poll> polls(static_cast<size_t>(worker_count(jobs_, n)),
                                   interruption_poll(stop_));
  parallel_for(
      jobs_, n,
      [&](int worker, int i) {
        polls[static_cast<size_t>(worker)].step();
        sg_ptr &sg = records[static_cast<size_t>(i)];
        const int at = level ? sg_set_find(level, sg.get()) : -1;
        if (at == -1)
          sg.reset();
        else
          sg->count = sg_set_get(level, at)->count;
      },
      [](int) {}, watcher);
  for (sg_ptr &sg : records)
    if (sg)
      sg_set_push(cand, std::move(sg));
  sg_set_compact(cand, stop_);
}

} // namespace kestro
