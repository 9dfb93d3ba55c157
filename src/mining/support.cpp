// Support counting in two steps: a bound by TID lists, then exact tests.
//
// A transaction that contains a pattern contains all its parents, so the
// intersection of their TID lists bounds its support at the cost of one pass
// over the lists.  In each transaction of the bound the candidate's one edge
// more is tried where a kept parent was found; a search, compiled once per
// candidate, follows only where that fails.

#include "mining/support.h"

#include <algorithm>
#include <climits>
#include <optional>
#include <utility>

#include "base/error.h"
#include "base/parallel.h"
#include "base/xmalloc.h"
#include "cl/search_plan.h"
#include "graph/graph_list.h"
#include "mining/embeddings.h"
#include "mining/links.h"
#include "mining/parents.h"
#include "mining/statistics.h"

namespace kestro {

namespace {

// Intersects the TID lists of one candidate's parents after another.
class tid_intersection {
public:
  tid_intersection(const sg_set *prev, const ksstack *transactions)
      : prev_(prev), met_(static_cast<size_t>(transactions->count), 0) {}

  // The transactions common to all parents of sg, ascending; none where there
  // are less than minsup.
  const xvector<int> &of(const subgraph *sg, int minsup) {
    common_.clear();
    const int n = sg_pid_size(sg);
    if (base_ > INT_MAX - n - 1) {
      std::fill(met_.begin(), met_.end(), 0);
      base_ = 0;
    }
    left_ = INT_MAX;
    int level = base_;
    base_ += n;
    // The kept parents are the least frequent ones: most bounds that come out
    // too low do so with them.
    for (int i = 0; i < sg_parent_size(sg) && left_ >= minsup; i++)
      walk(sg_parent_at(sg, i)->pid, level++);
    for (int i = 0; i < n && left_ >= minsup; i++)
      if (sg_find_parent(sg, sg_pid_at(sg, i)) == -1)
        walk(sg_pid_at(sg, i), level++);
    base_++;
    if (left_ < minsup)
      common_.clear();
    return common_;
  }

private:
  // Marks the transactions of one more parent that all before had, which show
  // level before; for the first one, any mark of earlier candidates will do.
  void walk(int pid, int level) {
    const bool is_first = left_ == INT_MAX;
    const bool is_last = level + 1 == base_;
    const ksstack *tid = sg_set_get(prev_, pid)->tid;
    const int *tids = ksstack_array<int>(tid);
    left_ = 0;
    for (int j = 0; j < tid->count; j++) {
      int &met = met_[static_cast<size_t>(tids[j])];
      if (met > level)
        die("subgraph.c", "something wrong\n");
      if (met < level && !is_first)
        continue;
      met = level + 1;
      left_++;
      if (is_last)
        common_.push_back(tids[j]);
    }
  }

  const sg_set *prev_;
  xvector<int> met_; // by transaction: base_ + lists it was in
  int base_ = 0;     // above all marks, or the last mark of this candidate
  int left_ = 0;     // transactions in all lists so far
  xvector<int> common_;
};

} // namespace

void sg_intersect_parent_tids(subgraph *sg, const sg_set *prev,
                              const ksstack *transactions) {
  if (!sg->pid)
    die("subgraph.c", "null pid\n");
  for (const int tid : tid_intersection(prev, transactions).of(sg, 0))
    sg_append_tid(sg, tid);
}

// Moves the records of a set out of it, in order.
static xvector<sg_ptr> take_records(sg_set *s) {
  xvector<sg_ptr> records(static_cast<size_t>(sg_set_size(s)));
  for (size_t i = 0; i < records.size(); i++)
    records[i].reset(sg_set_get(s, static_cast<int>(i)));
  sg_set_clear(s);
  return records;
}

// Gives sg a tid of just that size.
static void set_tids(subgraph *sg, const xvector<int> &tids) {
  const int n = static_cast<int>(tids.size());
  ksstack_free(std::exchange(sg->tid, nullptr));
  sg->tid = ksstack_new(std::max(n, 1), static_cast<int>(sizeof(int)));
  std::copy(tids.begin(), tids.end(), ksstack_array<int>(sg->tid));
  sg->tid->count = n;
}

void sg_filter_candidates_by_support(sg_set *cand, const sg_set *prev,
                                     const ksstack *transactions, int minsup,
                                     int jobs) {
  const int old = sg_set_size(cand);
  xvector<tid_intersection> intersections(
      static_cast<size_t>(std::max(jobs, 1)),
      tid_intersection(prev, transactions));
  xvector<sg_ptr> records = take_records(cand);
  parallel_for(
      jobs, old,
      [&](int worker, int i) {
        sg_ptr &sg = records[static_cast<size_t>(i)];
        const xvector<int> &common =
            intersections[static_cast<size_t>(worker)].of(sg.get(), minsup);
        if (static_cast<int>(common.size()) >= minsup)
          set_tids(sg.get(), common);
        else
          sg.reset();
      },
      [] {});
  for (sg_ptr &sg : records)
    if (sg)
      sg_set_push(cand, std::move(sg));
  assert(old >= sg_set_size(cand));
}

namespace {

// Walks one parent's transactions in step with the candidate's.
struct parent_cursor {
  const subgraph *parent;
  edge_placement placement;
  int at = 0; // position in the parent's tid

  // The index of the parent's row for transaction tid, which its list holds.
  int row_index(int tid) {
    const int *tids = ksstack_array<int>(parent->tid);
    while (at < parent->tid->count && tids[at] < tid)
      at++;
    assert(at < parent->tid->count && tids[at] == tid);
    return at;
  }
};

// Looks for one candidate in transaction after transaction.
class occurrence_finder {
public:
  occurrence_finder(const subgraph *sg, const sg_set *prev,
                    const graph_profiles &profiles)
      : sg_(sg), profiles_(profiles), image_(static_cast<size_t>(sg->g->vs)) {
    for (int i = 0; i < sg_parent_size(sg); i++) {
      const sg_parent *entry = sg_parent_at(sg, i);
      const subgraph *parent = sg_set_get(prev, entry->pid);
      if (parent->rows)
        cursors_.push_back({parent, edge_placement(sg, entry)});
    }
  }

  // Whether the candidate is found in transaction t by one edge more than a
  // parent; where, is written to row.
  template <class Image> bool extend(const graph *t, int tid, Image *row) {
    for (parent_cursor &cursor : cursors_) {
      const int i = cursor.row_index(tid);
      if (cursor.placement.extend(sg_row<Image>(cursor.parent, i), t, row))
        return true;
    }
    return false;
  }

  // The same by a search, which finds it wherever it is.
  template <class Image> bool search(const graph *t, int tid, Image *row) {
    if (sg_->g->es > t->es)
      return false;
    if (!plan_)
      plan_ = search_plan::rarest_first(sg_->g, profiles_);
    if (!plan_->find(profiles_, tid, image_.data()))
      return false;
    std::copy(image_.begin(), image_.end(), row);
    return true;
  }

private:
  const subgraph *sg_;
  const graph_profiles &profiles_;
  std::optional<search_plan> plan_; // made when first needed
  xvector<parent_cursor> cursors_;
  xvector<int> image_;
};

} // namespace

namespace {

// Turns a candidate's bound into its exact TID list.
template <class Image> class support_count {
public:
  support_count(subgraph *sg, const sg_set *prev, const ksstack *transactions,
                const graph_profiles &profiles)
      : sg_(sg), transactions_(transactions), finder_(sg, prev, profiles),
        tids_(ksstack_array<int>(sg->tid)), n_(sg_tid_size(sg)),
        found_(static_cast<size_t>(n_), 0),
        row_(static_cast<size_t>(sg->g->vs)) {}

  // The support, or some number below minsup if it is below.
  int count(int minsup) {
    int missing = 0; // transactions where it is not found yet
    for (int i = 0; i < n_; i++)
      missing += !(found_[at(i)] = finder_.extend(transaction(i), tids_[i],
                                                  row(i)));
    for (int i = 0; i < n_ && n_ - lost_ >= minsup && missing > 0;
         i++) {
      if (found_[at(i)])
        continue;
      missing--;
      found_[at(i)] = finder_.search(transaction(i), tids_[i], row(i));
      lost_ += !found_[at(i)];
    }
    return close_gaps();
  }

private:
  static size_t at(int i) { return static_cast<size_t>(i); }
  const graph *transaction(int i) const {
    return graph_list_at(transactions_, tids_[i]);
  }

  // Where the row of the i-th transaction of the bound goes.
  Image *row(int i) {
    return sg_->rows ? ksstack_array<Image>(sg_->rows) + at(i) * row_.size()
                     : row_.data();
  }

  // Moves what belongs to the transactions found together; returns their number.
  int close_gaps() {
    int matches = 0;
    for (int i = 0; i < n_; i++) {
      if (!found_[at(i)])
        continue;
      tids_[matches] = tids_[i];
      if (sg_->rows && matches < i)
        std::copy_n(row(i), row_.size(), row(matches));
      matches++;
    }
    sg_->tid->count = matches;
    if (sg_->rows)
      sg_->rows->count = matches;
    return matches;
  }

  subgraph *sg_;
  const ksstack *transactions_;
  occurrence_finder finder_;
  int *tids_;
  int n_; // transactions of the bound
  xvector<char> found_;
  xvector<Image> row_; // for rows that are not kept
  int lost_ = 0; // transactions where a search failed
};

} // namespace

support_counter::support_counter(const ksstack *transactions, int jobs)
    : transactions_(transactions), jobs_(jobs), profiles_(transactions),
      budget_(transactions) {}

int support_counter::count(subgraph *sg, const sg_set *prev, int minsup) {
  if (budget_.image_bytes() == 1)
    return support_count<uint8_t>(sg, prev, transactions_, profiles_)
        .count(minsup);
  return support_count<uint16_t>(sg, prev, transactions_, profiles_)
      .count(minsup);
}

int sg_count_support(subgraph *sg, const sg_set *prev,
                     const ksstack *transactions) {
  return support_counter(transactions, 1).count(sg, prev, 0);
}

// Frees what only the next size needs.
static void free_rows_and_links(sg_set *level) {
  for (int i = 0; i < sg_set_size(level); i++) {
    subgraph *sg = sg_set_get(level, i);
    ksstack_free(std::exchange(sg->rows, nullptr));
    sg_free_links(sg);
  }
}

// Counts one candidate; frees it if it is not frequent.
void support_counter::count_candidate(sg_ptr *cand, const sg_set *prev,
                                      int minsup, embedding_budget *budget) {
  subgraph *sg = cand->get();
  budget->add_pattern();
  sg->rows = budget->take_rows(sg, sg_tid_size(sg));
  sg->count = count(sg, prev, minsup);
  if (sg->count >= minsup)
    return;
  budget->give_back(sg);
  budget->remove_pattern();
  cand->reset();
}

sg_set *support_counter::count_frequents(sg_set *cand, sg_set *prev,
                                         int minsup) {
  sg_set_ptr consumed(cand);
  const int k = sg_set_get(prev, 0)->g->es / 2 + 1;
  embedding_budget budget(budget_);
  for (int i = 0; i < sg_set_size(prev); i++) {
    budget.add_pattern();
    budget.charge(sg_set_get(prev, i));
  }
  xvector<sg_ptr> records = take_records(cand);
  parallel_for(
      jobs_, static_cast<int>(records.size()),
      [&](int, int i) {
        count_candidate(&records[static_cast<size_t>(i)], prev, minsup,
                        &budget);
      },
      search_plan_free_work_area);
  sg_set_ptr level(sg_set_create());
  for (sg_ptr &sg : records)
    if (sg)
      sg_set_push(level.get(), std::move(sg));
  free_rows_and_links(prev);
  KESTRO_STRUCTURE(sg_set_check(level.get()));
  sg_register_children(level.get(), prev);
  stats_set(stats_frequent, k, sg_set_size(level.get()));
  return level.release();
}

sg_set *sg_count_frequents(sg_set *cand, sg_set *prev,
                           const ksstack *transactions, int minsup) {
  return support_counter(transactions, 1).count_frequents(cand, prev, minsup);
}

} // namespace kestro
