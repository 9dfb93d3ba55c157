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

// Dies unless the list is ascending without repeats.
static void check_order(const subgraph *sg) {
  if (!sg->tid)
    return;
  const int *tids = ksstack_array<int>(sg->tid);
  for (int i = 1; i < sg_tid_size(sg); i++)
    if (tids[i] <= tids[i - 1])
      die("subgraph.c", "something wrong\n");
}

tid_lists::tid_lists(const sg_set *level, int transactions,
                     const interruption *stop)
    : level_(level), words_((static_cast<size_t>(transactions) + 63) / 64) {
  const size_t lists = static_cast<size_t>(sg_set_size(level));
  interruption_poll poll(stop, 1 << 14);
  size_t held = 0;
  for (size_t i = 0; i < lists; i++) {
    expect_records(level, static_cast<int>(i), record_part::head);
    const subgraph *sg = sg_set_get(level, static_cast<int>(i));
    check_order(sg);
    poll.step(sg_tid_size(sg) + 16);
    held += static_cast<size_t>(sg_tid_size(sg));
  }
  if (lists * words_ * sizeof(uint64_t) > 2 * held * sizeof(int))
    return;
  bits_.reserve(lists * words_);
  for (size_t i = 0; i < lists; i++) {
    bits_.resize((i + 1) * words_, 0);
    const subgraph *sg = sg_set_get(level, static_cast<int>(i));
    uint64_t *bits = bits_.data() + i * words_;
    poll.step(sg_tid_size(sg) + static_cast<int64_t>(words_));
    for (int j = 0; j < sg_tid_size(sg); j++) {
      const size_t tid = static_cast<size_t>(ksstack_array<int>(sg->tid)[j]);
      bits[tid / 64] |= uint64_t{1} << tid % 64;
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
