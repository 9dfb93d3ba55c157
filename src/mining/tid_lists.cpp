// Intersections of TID lists.
//
// Lists that hold more than a few of all transactions are kept as sets of bits,
// too: one operation on a word handles sixty-four transactions.  The kept
// parents come first: they are the least frequent ones, so most intersections
// that end up too short do so with them.

#include "mining/tid_lists.h"

#include <algorithm>
#include <bit>
#include <iterator>

#include "base/bit_sets.h"
#include "base/error.h"
#include "mining/expect_records.h"

namespace kestro {

[[noreturn]] static void die_of_order() {
  die("subgraph.c", "something wrong\n");
}

// Dies unless the list is ascending without repeats.
static void check_order(const subgraph *sg) {
  const int *tids = sg->tid ? ksstack_array<int>(sg->tid) : nullptr;
  for (int i = 1; i < sg_tid_size(sg); i++)
    if (tids[i] <= tids[i - 1])
      die_of_order();
}

// The same, and sets a bit for each transaction of the list.
static void set_bits(const subgraph *sg, uint64_t *bits) {
  const int *tids = sg->tid ? ksstack_array<int>(sg->tid) : nullptr;
  const int n = sg_tid_size(sg);
  int last = -1;
  for (int i = 0; i < n;) {
    const int word = tids[i] / 64;
    uint64_t set = 0;
    for (; i < n && tids[i] / 64 == word; i++) {
      if (tids[i] <= last)
        die_of_order();
      last = tids[i];
      set |= uint64_t{1} << last % 64;
    }
    bits[word] |= set;
  }
}

// Sends for the TID lists that come after list i.
static void expect_lists(const sg_set *level, int i) {
  constexpr int ahead = 6;
  expect_records(level, i, record_part::head);
  if (i + ahead < sg_set_size(level))
    __builtin_prefetch(sg_set_get(level, i + ahead)->tid);
}

tid_lists::tid_lists(const sg_set *level, int transactions,
                     const interruption *stop)
    : level_(level), words_((static_cast<size_t>(transactions) + 63) / 64) {
  const int lists = sg_set_size(level);
  interruption_poll poll(stop, 1 << 14);
  size_t held = 0;
  for (int i = 0; i < lists; i++) {
    expect_lists(level, i);
    poll.step();
    held += static_cast<size_t>(sg_tid_size(sg_set_get(level, i)));
  }
  const size_t words = static_cast<size_t>(lists) * words_;
  const bool are_dense = words * sizeof(uint64_t) <= 2 * held * sizeof(int);
  if (are_dense)
    bits_.reserve(words);
  for (int i = 0; i < lists; i++) {
    expect_lists(level, i);
    const subgraph *sg = sg_set_get(level, i);
    poll.step(sg_tid_size(sg) + static_cast<int64_t>(words_));
    if (are_dense) {
      bits_.resize(bits_.size() + words_, 0);
      set_bits(sg, bits_.data() + (bits_.size() - words_));
    } else {
      check_order(sg);
    }
  }
}

// Takes out what parent pid does not have; false when less than minsup is left.
bool tid_lists::narrow(int pid, bool is_first, int minsup,
                       workspace *work) const {
  const subgraph *parent = sg_set_get(level_, pid);
  work->poll.step(bits_.empty() ? sg_tid_size(parent)
                                : static_cast<int64_t>(words_));
  if (bits_.empty()) {
    const int *tids = ksstack_array<int>(parent->tid);
    const int *end = tids + sg_tid_size(parent);
    if (is_first) {
      work->common.assign(tids, end);
    } else {
      work->narrowed.clear();
      std::set_intersection(work->common.begin(), work->common.end(), tids, end,
                            std::back_inserter(work->narrowed));
      work->common.swap(work->narrowed);
    }
    return static_cast<int>(work->common.size()) >= minsup;
  }
  const uint64_t *bits = bits_.data() + static_cast<size_t>(pid) * words_;
  return and_count(is_first ? bits : work->bits.data(), bits, work->bits.data(),
                   words_) >= minsup;
}

void tid_lists::list_bits(workspace *work) const {
  for (size_t i = 0; i < words_; i++)
    for (uint64_t left = work->bits[i]; left; left &= left - 1)
      work->common.push_back(static_cast<int>(64 * i) + std::countr_zero(left));
}

const xvector<int> &tid_lists::common_to_parents(const subgraph *sg, int minsup,
                                                 workspace *work) const {
  work->common.clear();
  work->bits.resize(words_);
  bool enough = sg_parent_size(sg) > 0;
  bool is_first = true;
  for (int i = 0; i < sg_kept_size(sg) && enough; i++) {
    enough = narrow(sg_kept_at(sg, i)->pid, is_first, minsup, work);
    is_first = false;
  }
  // A parent that several entries lead to changes nothing the second time.
  for (int i = 0; i < sg_parent_size(sg) && enough; i++) {
    const int pid = sg_parent_at(sg, i)->pid;
    if (sg_find_kept(sg, pid))
      continue;
    enough = narrow(pid, is_first, minsup, work);
    is_first = false;
  }
  if (!enough)
    work->common.clear();
  else if (!bits_.empty())
    list_bits(work);
  return work->common;
}

} // namespace kestro
