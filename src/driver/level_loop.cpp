// The level-wise search.
//
// Two levels are alive at a time: size k-2, whose child lists say which
// patterns to join, and size k-1, the patterns themselves.  Each round turns
// them into candidates of size k, drops most of these by the bound on their
// transactions, counts the rest, and frees the older level.

#include "driver/level_loop.h"

#include <utility>

#include "mining/links.h"
#include "mining/parents.h"

namespace kestro {

namespace {

// The two newest levels; null when not mined.
struct level_pair {
  sg_set_ptr prev;
  sg_set_ptr cur;
};

} // namespace

static void report_level(const mining_run *run, const sg_set *level, int size) {
  run->receiver->level(level);
  run->progress->level(size);
}

static void count_level(const mining_run *run, const sg_set *level, int size) {
  stats_set(run->stats, stats_frequent, size, sg_set_size(level));
}

// Sizes 1 and 2.
static level_pair mine_first_levels(const mining_run *run) {
  level_pair levels;
  if (run->maxsize < 1)
    return levels;
  check_interruption(run->stop);
  levels.prev = run->counter->edges();
  count_level(run, levels.prev.get(), 1);
  if (sg_set_size(levels.prev.get()) == 0)
    return levels;
  if (run->minsize < 2)
    report_level(run, levels.prev.get(), 1);
  if (run->maxsize < 2)
    return levels;
  check_interruption(run->stop);
  levels.cur = run->counter->double_edges(levels.prev.get());
  count_level(run, levels.cur.get(), 2);
  sg_register_children(levels.cur.get(), levels.prev.get(), run->stop);
  if (sg_set_size(levels.cur.get()) > 0 && run->minsize <= 2)
    report_level(run, levels.cur.get(), 2);
  return levels;
}

// Frees what is of no use to a level once the size above it has been counted:
// the ways to its parents and where it occurs.
static void free_after_use(sg_set *level, const interruption *stop) {
  interruption_poll poll(stop);
  for (int i = 0; i < sg_set_size(level); i++) {
    poll.step();
    subgraph *sg = sg_set_get(level, i);
    sg_free_links(sg);
    ksstack_free(std::exchange(sg->rows, nullptr));
    ksstack_free(std::exchange(sg->tid, nullptr));
  }
}

// Size k: moves the pair one level up; cur is null when no candidate is left.
static void mine_level(const mining_run *run, int k, level_pair *levels) {
  generation_options options = run->generation;
  options.stop = run->stop;
  generation made =
      sg_generate_candidates(levels->cur.get(), levels->prev.get(), options);
  run->stats->order_dependent += made.order_dependent;
  sg_set_ptr cand = std::move(made.candidates);
  stats_set(run->stats, stats_candidates, k, sg_set_size(cand.get()));
  run->receiver->candidates(cand.get());
  check_interruption(run->stop);
  run->counter->bound(cand.get(), levels->cur.get());
  levels->prev = std::move(levels->cur);
  if (sg_set_size(cand.get()) == 0)
    return;
  if (run->minsize <= k && k <= run->maxsize)
    run->progress->candidates(k);
  check_interruption(run->stop);
  run->counter->count(cand.get(), levels->prev.get());
  free_after_use(levels->prev.get(), run->stop);
  sg_register_children(cand.get(), levels->prev.get(), run->stop);
  count_level(run, cand.get(), k);
  levels->cur = std::move(cand);
}

static int first_levels_size(const level_pair *levels) {
  if (levels->cur)
    return 2;
  return levels->prev && sg_set_size(levels->prev.get()) > 0 ? 1 : 0;
}

int mine_levels(const mining_run *run) {
  level_pair levels = mine_first_levels(run);
  int k = first_levels_size(&levels);
  while (k < run->maxsize && levels.cur && sg_set_size(levels.cur.get()) > 0) {
    k++;
    check_interruption(run->stop);
    mine_level(run, k, &levels);
    if (levels.cur && k >= run->minsize)
      report_level(run, levels.cur.get(), k);
  }
  return k;
}

} // namespace kestro
