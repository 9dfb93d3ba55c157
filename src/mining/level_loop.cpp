// The level-wise search.
//
// Two levels are alive between rounds: size k-2, under which patterns are
// joined, and size k-1, the patterns themselves.  Each round lists under which
// of the older ones the newer ones are joined, frees the older level, joins
// candidates of size k, drops most of them by the bound on their transactions,
// and counts the rest.

#include "mining/level_loop.h"

#include <utility>

#include "mining/expect_records.h"

namespace kestro {

namespace {

// The two newest levels; null when not mined.
struct level_pair {
  sg_set_ptr prev;
  sg_set_ptr cur;
};

} // namespace

static int patterns_in(const sg_set_ptr &level) {
  return level ? sg_set_size(level.get()) : 0;
}

// False when the receiver has enough.
static bool report_level(const mining_run *run, const sg_set *level, int size,
                         int candidates) {
  const int n = sg_set_size(level);
  bool more = true;
  if (n > 0 && size >= run->minsize)
    more = run->receiver->level(level);
  run->receiver->advanced({size, progress::step::complete, n, n, candidates});
  return more;
}

static void count_level(const mining_run *run, const sg_set *level, int size) {
  stats_set(run->stats, stats_frequent, size, sg_set_size(level));
}

// Sizes 1 and 2, as far as there are patterns; returns the last one tried.
// wanted becomes false when the receiver has enough.
static int mine_first_levels(const mining_run *run, level_pair *levels,
                             bool *wanted) {
  if (run->maxsize < 1)
    return 0;
  check_interruption(run->stop);
  levels->prev = run->counter->edges();
  count_level(run, levels->prev.get(), 1);
  if (patterns_in(levels->prev) == 0)
    return 0;
  *wanted = report_level(run, levels->prev.get(), 1, 0);
  if (!*wanted || run->maxsize < 2)
    return 1;
  check_interruption(run->stop);
  levels->cur = run->counter->double_edges(levels->prev.get());
  count_level(run, levels->cur.get(), 2);
  if (patterns_in(levels->cur) > 0)
    *wanted = report_level(run, levels->cur.get(), 2, 0);
  return 2;
}

// Frees what the counter has left of a level's embeddings and TID lists, which
// are needed only until the size above has been counted.
static void free_after_use(sg_set *level, const interruption *stop) {
  interruption_poll poll(stop);
  for (int i = 0; i < sg_set_size(level); i++) {
    poll.step();
    expect_records(level, i, record_part::head);
    subgraph *sg = sg_set_get(level, i);
    ksstack_free(std::exchange(sg->rows, nullptr));
    ksstack_free(std::exchange(sg->tid, nullptr));
  }
}

namespace {

// Passes on how far one step of one size is.
class step_watcher : public work_watcher {
public:
  step_watcher(level_receiver *to, const progress &start)
      : to_(to), now_(start) {}
  void advanced(int taken, int count) override {
    now_.done = taken;
    now_.known = count;
    to_->advanced(now_);
  }

private:
  level_receiver *to_;
  progress now_;
};

} // namespace

// Joins cur, and frees prev before, since child lists and groups are all that
// joins need of it.
static generation join_level(const mining_run *run, level_pair *levels,
                             const generation_options &options) {
  const sg_set *cur = levels->cur.get();
  const core_links cores(levels->prev.get(), cur, options.jobs, run->stop);
  levels->prev.reset();
  return sg_generate_candidates(cur, cores, options);
}

// Size k: moves the pair one level up; cur is null when no candidate is left.
// False when the receiver has enough.
static bool mine_level(const mining_run *run, int k, chunk_pool *chunks,
                       level_pair *levels) {
  level_receiver *const to = run->receiver;
  generation_options options = run->generation;
  options.stop = run->stop;
  options.chunks = chunks;
  step_watcher joining(to, {k, progress::step::joining, 0, 0, 0});
  options.watcher = &joining;
  generation joined = join_level(run, levels, options);
  run->stats->order_dependent += joined.order_dependent;
  sg_set_ptr cand = std::move(joined.candidates);
  const int generated = sg_set_size(cand.get());
  stats_set(run->stats, stats_candidates, k, generated);
  to->candidates(cand.get());
  check_interruption(run->stop);
  step_watcher bounding(to, {k, progress::step::bounding, 0, 0, generated});
  run->counter->bound(cand.get(), levels->cur.get(), &bounding);
  levels->prev = std::move(levels->cur);
  const int bounded = sg_set_size(cand.get());
  if (bounded == 0)
    return true;
  step_watcher counting(to, {k, progress::step::counting, 0, 0, generated});
  counting.advanced(0, bounded);
  check_interruption(run->stop);
  run->counter->count(cand.get(), levels->prev.get(), &counting);
  free_after_use(levels->prev.get(), run->stop);
  count_level(run, cand.get(), k);
  levels->cur = std::move(cand);
  return report_level(run, levels->cur.get(), k, generated);
}

search_end mine_levels(const mining_run *run) {
  chunk_pool chunks; // of all levels, which it outlives
  level_pair levels;
  bool wanted = true;
  int last = mine_first_levels(run, &levels, &wanted);
  while (wanted && last < run->maxsize && patterns_in(levels.cur) > 0) {
    check_interruption(run->stop);
    wanted = mine_level(run, ++last, &chunks, &levels);
  }
  const sg_set_ptr &newest = last < 2 ? levels.prev : levels.cur;
  return {last, run->maxsize < 1 || patterns_in(newest) > 0};
}

} // namespace kestro
