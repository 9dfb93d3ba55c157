// Support counting in two steps: a bound by TID lists, then exact tests.
//
// A transaction that contains a pattern contains all its parents, so the
// intersection of their TID lists bounds its support at the cost of one pass
// over the lists.  In each transaction of the bound, the candidate's one edge
// more is placed at the embedding of a kept parent; a search, prepared once per
// candidate, follows only where that fails.

#include "mining/support.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "base/error.h"
#include "base/parallel.h"
#include "base/xmalloc.h"
#include "mining/embeddings.h"
#include "mining/expect_records.h"
#include "mining/occurrences.h"
#include "mining/tid_lists.h"

namespace kestro {

// Gives sg a tid of just that size.
static void set_tids(subgraph *sg, const xvector<int> &tids) {
  const int n = static_cast<int>(tids.size());
  ksstack_free(std::exchange(sg->tid, nullptr));
  sg->tid = ksstack_new(std::max(n, 1), static_cast<int>(sizeof(int)));
  std::copy(tids.begin(), tids.end(), ksstack_array<int>(sg->tid));
  sg->tid->count = n;
}

// Sends for the candidates that come after candidate i, of those before end: no
// other thread may free them meanwhile.
static void expect_candidates(const xvector<sg_ptr> &candidates, int i,
                              int end) {
  expect_records(
      end, [&](int j) { return candidates[static_cast<size_t>(j)].get(); }, i,
      record_part::parents);
}

void sg_filter_candidates_by_support(sg_set *cand, const sg_set *prev,
                                     const graph_list *transactions, int minsup,
                                     int jobs, const interruption *stop,
                                     work_watcher *watcher) {
  const int old = sg_set_size(cand);
  const tid_lists lists(prev, transactions->count, stop);
  xvector<tid_lists::workspace> work(
      static_cast<size_t>(worker_count(jobs, old)));
  for (tid_lists::workspace &w : work)
    w.poll = interruption_poll(stop, 1 << 16);
  xvector<sg_ptr> records = sg_set_take_records(cand);
  parallel_for(
      jobs, old,
      [&](int worker, int i, int end) {
        expect_candidates(records, i, end);
        sg_ptr &sg = records[static_cast<size_t>(i)];
        const xvector<int> &common = lists.common_to_parents(
            sg.get(), minsup, &work[static_cast<size_t>(worker)]);
        if (static_cast<int>(common.size()) >= minsup)
          set_tids(sg.get(), common);
        else
          sg.reset();
      },
      [](int) {}, watcher);
  for (sg_ptr &sg : records)
    if (sg)
      sg_set_push(cand, std::move(sg));
  sg_set_compact(cand, stop);
  assert(old >= sg_set_size(cand));
}

support_counter::support_counter(const graph_list *transactions, int jobs,
                                 const interruption *stop)
    : jobs_(jobs), stop_(stop), profiles_(transactions, stop),
      slots_(transactions, stop), budget_(transactions) {}

namespace {

// Frees the rows and TID lists of a level once the last candidate that they can
// serve has been counted.  So little more than one level of them is alive.
class level_release {
public:
  level_release(const sg_set *level, const xvector<sg_ptr> &candidates,
                embedding_budget *budget);
  // Several threads may count.
  void counted(const subgraph *candidate);

private:
  void free_at(int pid);

  const sg_set *level_;
  embedding_budget *budget_;
  xvector<std::atomic<int>> waiting_; // candidates by kept parent
};

} // namespace

level_release::level_release(const sg_set *level,
                             const xvector<sg_ptr> &candidates,
                             embedding_budget *budget)
    : level_(level), budget_(budget),
      waiting_(static_cast<size_t>(sg_set_size(level))) {
  for (size_t c = 0; c < candidates.size(); c++) {
    expect_candidates(candidates, static_cast<int>(c),
                      static_cast<int>(candidates.size()));
    const subgraph *sg = candidates[c].get();
    for (int i = 0; i < sg_kept_size(sg); i++)
      waiting_[static_cast<size_t>(sg_kept_at(sg, i)->pid)]++;
  }
  for (int pid = 0; pid < sg_set_size(level); pid++)
    if (waiting_[static_cast<size_t>(pid)] == 0)
      free_at(pid);
}

void level_release::free_at(int pid) {
  subgraph *sg = sg_set_get(level_, pid);
  budget_->give_back(sg);
  ksstack_free(std::exchange(sg->rows, nullptr));
  ksstack_free(std::exchange(sg->tid, nullptr));
}

void level_release::counted(const subgraph *candidate) {
  for (int i = 0; i < sg_kept_size(candidate); i++) {
    const int pid = sg_kept_at(candidate, i)->pid;
    if (--waiting_[static_cast<size_t>(pid)] == 0)
      free_at(pid);
  }
}

// Counts one candidate; frees it if it is not frequent.
static void count_candidate(sg_ptr *cand, const sg_set *prev, int minsup,
                            occurrence_finder *finder, embedding_budget *budget,
                            level_release *release) {
  subgraph *sg = cand->get();
  budget->add_pattern();
  sg->rows = budget->take_rows(sg, sg_tid_size(sg));
  sg->count = finder->find(sg, prev, minsup);
  release->counted(sg);
  if (sg->count >= minsup) {
    budget->give_back(sg);
    sg->tid = ksstack_trim(sg->tid);
    if (sg->rows)
      sg->rows = ksstack_trim(sg->rows);
    budget->charge(sg);
    return;
  }
  budget->give_back(sg);
  budget->remove_pattern();
  cand->reset();
}

void support_counter::count_all(sg_set *cand, const sg_set *prev, int minsup,
                                work_watcher *watcher) {
  embedding_budget budget(budget_);
  for (int i = 0; i < sg_set_size(prev); i++) {
    expect_records(prev, i, record_part::head);
    budget.add_pattern();
    budget.charge(sg_set_get(prev, i));
  }
  xvector<sg_ptr> records = sg_set_take_records(cand);
  const int count = static_cast<int>(records.size());
  level_release release(prev, records, &budget);
  xvector<occurrence_finder> finders(
      static_cast<size_t>(worker_count(jobs_, count)),
      occurrence_finder(&profiles_, &slots_, stop_));
  parallel_for(
      jobs_, count,
      [&](int worker, int i, int end) {
        expect_candidates(records, i, end);
        count_candidate(&records[static_cast<size_t>(i)], prev, minsup,
                        &finders[static_cast<size_t>(worker)], &budget,
                        &release);
      },
      [](int) {}, watcher);
  for (sg_ptr &sg : records)
    if (sg)
      sg_set_push(cand, std::move(sg));
  sg_set_compact(cand, stop_);
  KESTRO_STRUCTURE(sg_set_check(cand));
}

} // namespace kestro
