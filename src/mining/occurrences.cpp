// Where candidates occur.
//
// In each transaction of its bound, a candidate is first tried at the embedding
// of a kept parent, by placing one edge; that takes no search and finds most.
// Searches follow in the other transactions, and stop when minsup is out of
// reach, which for most infrequent candidates is after a few transactions.

#include "mining/occurrences.h"

#include <algorithm>
#include <cassert>

namespace kestro {

static constexpr int search_cost = 16; // in edges placed, of a short search

static size_t index(int i) { return static_cast<size_t>(i); }

// The index of the parent's row for transaction tid, which its list holds.
int occurrence_finder::parent_cursor::row_index(int tid) {
  const int *tids = ksstack_array<int>(parent->tid);
  const int n = parent->tid->count;
  int i = at;
  while (i < n && tids[i] < tid)
    i++;
  assert(i < n && tids[i] == tid);
  at = i;
  return i;
}

int occurrence_finder::find(subgraph *sg, const sg_set *prev, int minsup) {
  sg_ = sg;
  tids_ = sg->tid ? ksstack_array<int>(sg->tid) : nullptr;
  parents_ = 0;
  bool is_byte = true;
  for (int i = 0; i < sg_kept_size(sg); i++) {
    const sg_parent *entry = sg_kept_at(sg, i);
    const subgraph *parent = sg_set_get(prev, entry->pid);
    if (!parent->rows)
      continue;
    is_byte = sg_has_byte_rows(parent);
    parent_cursor &cursor = cursors_[parents_++];
    cursor.parent = parent;
    cursor.placement.set(sg, entry, slots_);
    cursor.at = 0;
  }
  is_planned_ = false;
  found_.assign(index(sg_tid_size(sg)), 0);
  image_.resize(index(sg->g->vs));
  row_.resize(index(sg->g->vs));
  if (sg->rows)
    is_byte = sg_has_byte_rows(sg);
  return is_byte ? find_all<uint8_t>(minsup) : find_all<uint16_t>(minsup);
}

template <class Image> int occurrence_finder::find_all(int minsup) {
  const int n = sg_tid_size(sg_);
  bool all_found = true;
  for (int i = 0; i < n;) {
    static constexpr int block = 256;
    poll_.step(block);
    for (const int end = std::min(n, i + block); i < end; i++) {
      found_[index(i)] = extend(i, row_of<Image>(i));
      all_found &= found_[index(i)];
    }
  }
  if (!all_found)
    search_open<Image>(n - minsup);
  return close_gaps<Image>();
}

// Searches the transactions where it is not found yet, until it is missing from
// more than may_lack.  Small ones come first: there a search is short, and the
// candidate is missing most often.
template <class Image> void occurrence_finder::search_open(int may_lack) {
  const int n = sg_tid_size(sg_);
  int lacking = 0;
  for (const bool small : {true, false}) {
    for (int i = 0; i < n; i++) {
      if (found_[index(i)] || profiles_->is_small(tids_[i]) != small)
        continue;
      found_[index(i)] = search(i, row_of<Image>(i));
      lacking += !found_[index(i)];
      if (lacking > may_lack)
        return;
    }
  }
}

// Tries transaction i of the bound by one edge more than a parent; where the
// candidate is found is written to row.
template <class Image> bool occurrence_finder::extend(int i, Image *row) {
  const int tid = tids_[i];
  for (int p = 0; p < parents_; p++) {
    parent_cursor &cursor = cursors_[p];
    const Image *parent_row =
        sg_row<Image>(cursor.parent, cursor.row_index(tid));
    if (cursor.placement.extend(parent_row, tid, row))
      return true;
  }
  return false;
}

// The same by a search, which finds the candidate wherever it is.
template <class Image> bool occurrence_finder::search(int i, Image *row) {
  const int tid = tids_[i];
  if (sg_->g->es > profiles_->graph_at(tid)->es)
    return false;
  poll_.step(search_cost);
  if (!is_planned_)
    plan_.set_rarest_first(sg_->g, *profiles_);
  is_planned_ = true;
  if (!plan_.find(*profiles_, tid, image_.data()))
    return false;
  std::copy(image_.begin(), image_.end(), row);
  return true;
}

// Where the row of transaction i of the bound goes.
template <class Image> Image *occurrence_finder::row_of(int i) {
  if (!sg_->rows)
    return reinterpret_cast<Image *>(row_.data());
  return ksstack_array<Image>(sg_->rows) + index(i) * index(sg_->g->vs);
}

// Moves what belongs to the transactions found together; returns their number.
template <class Image> int occurrence_finder::close_gaps() {
  const int n = sg_tid_size(sg_);
  int matches = 0;
  for (int i = 0; i < n; i++) {
    if (!found_[index(i)])
      continue;
    tids_[matches] = tids_[i];
    if (sg_->rows && matches < i)
      std::copy_n(row_of<Image>(i), sg_->g->vs, row_of<Image>(matches));
    matches++;
  }
  if (sg_->tid)
    sg_->tid->count = matches;
  if (sg_->rows)
    sg_->rows->count = matches;
  return matches;
}

} // namespace kestro
