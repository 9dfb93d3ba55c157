// The level-wise search.
//
// Two levels are alive at a time: size k-2, whose child lists say which
// patterns to join, and size k-1, the patterns themselves.  Each round turns
// them into candidates of size k, drops most of these by the bound on their
// transactions, counts the rest, and frees the older level.

#include "driver/level_loop.h"

#include "mining/candidates.h"
#include "mining/first_levels.h"

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

// Sizes 1 and 2.
static level_pair mine_first_levels(const mining_run *run) {
  level_pair levels;
  if (run->maxsize < 1)
    return levels;
  levels.prev.reset(sg_frequent_edges(run->transactions, run->minsup,
                                      run->edge_labels, run->vertex_labels));
  if (sg_set_size(levels.prev.get()) == 0)
    return levels;
  if (run->minsize < 2)
    report_level(run, levels.prev.get(), 1);
  if (run->maxsize < 2)
    return levels;
  levels.cur.reset(sg_frequent_double_edges(
      levels.prev.get(), run->transactions, run->minsup, run->edge_labels,
      run->vertex_labels));
  if (sg_set_size(levels.cur.get()) > 0 && run->minsize <= 2)
    report_level(run, levels.cur.get(), 2);
  return levels;
}

// Size k: moves the pair one level up; cur is null when no candidate is left.
static void mine_level(const mining_run *run, int k, level_pair *levels) {
  sg_set_ptr cand(
      sg_generate_candidates(levels->cur.get(), levels->prev.get(), run->jobs));
  run->receiver->candidates(cand.get());
  run->counter->filter(cand.get(), levels->cur.get());
  levels->prev.reset();
  sg_set_ptr next;
  if (sg_set_size(cand.get()) > 0) {
    if (run->minsize <= k && k <= run->maxsize)
      run->progress->candidates(k);
    next.reset(run->counter->count(cand.release(), levels->cur.get()));
  }
  levels->prev = std::move(levels->cur);
  levels->cur = std::move(next);
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
    mine_level(run, k, &levels);
    if (levels.cur && k >= run->minsize)
      report_level(run, levels.cur.get(), k);
  }
  return k;
}

} // namespace kestro
