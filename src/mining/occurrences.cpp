// Where candidates occur.
//
// In each transaction of its bound, a candidate is first tried at the embedding
// of a kept parent, by placing one edge; that takes no search and finds most.
// Searches follow in the other transactions, and stop when minsup is out of
// reach, which for most infrequent candidates is after a few transactions.

#include "mining/occurrences.h"

#include <algorithm>

#include "mining/embeddings.h"

namespace kestro {

static constexpr int search_cost = 16; // in edges placed, of a short search
static constexpr int block = 256;      // edges placed from poll to poll

static size_t index(int i) { return static_cast<size_t>(i); }

int occurrence_finder::find(subgraph *sg, const sg_set *prev, int minsup) {
  sg_ = sg;
  is_planned_ = false;
  return has_byte_rows(prev) ? find_all<uint8_t>(prev, minsup)
                             : find_all<uint16_t>(prev, minsup);
}

// Whether the candidate's rows or those of a kept parent are of bytes; all are
// of one type.
bool occurrence_finder::has_byte_rows(const sg_set *prev) const {
  if (sg_->rows)
    return sg_has_byte_rows(sg_);
  for (int l = 0; l < sg_kept_size(sg_); l++) {
    const subgraph *parent = sg_set_get(prev, sg_kept_at(sg_, l)->pid);
    if (parent->rows)
      return sg_has_byte_rows(parent);
  }
  return true;
}

template <class Image>
int occurrence_finder::find_all(const sg_set *prev, int minsup) {
  const int n = sg_tid_size(sg_);
  found_.assign(index(n), 0);
  if (!sg_->rows)
    row_.resize(index(sg_->g->vs + edge_placement::spare_images));
  const row_places<Image> to = {
      sg_->tid ? ksstack_array<int>(sg_->tid) : nullptr, n,
      sg_->rows ? ksstack_array<Image>(sg_->rows)
                : reinterpret_cast<Image *>(row_.data()),
      sg_->rows != nullptr, found_.data()};
  int open = n; // transactions where it is not found yet
  for (int l = 0; l < sg_kept_size(sg_) && open > 0; l++) {
    const sg_parent *entry = sg_kept_at(sg_, l);
    const subgraph *parent = sg_set_get(prev, entry->pid);
    if (!parent->rows)
      continue;
    placement_.set(sg_, entry, slots_);
    open -= open == n ? extend_all(parent, to) : extend_open(parent, to);
  }
  if (open > 0)
    open -= search_open(to, n - minsup);
  if (open > 0)
    close_gaps(to);
  else if (sg_->rows)
    sg_->rows->count = n;
  return n - open;
}

// Tries all transactions of the bound, in none of which it is found yet, by one
// edge more than a parent; returns in how many it is found.
template <class Image>
int occurrence_finder::extend_all(const subgraph *parent,
                                  const row_places<Image> &to) {
  row_cursor<Image> from(parent);
  int found = 0;
  for (int i = 0; i < to.count; i += block) {
    poll_.step(block);
    found += placement_.extend_all(&from, to, i, std::min(to.count, i + block));
  }
  return found;
}

// The same for those where it is not found yet.
template <class Image>
int occurrence_finder::extend_open(const subgraph *parent,
                                   const row_places<Image> &to) {
  row_cursor<Image> from(parent);
  int found = 0;
  for (int i = 0; i < to.count; i++) {
    if (to.found[i])
      continue;
    poll_.step();
    from.move_to(to.tids[i]);
    to.found[i] =
        placement_.extend(from.row(), to.tids[i], to.row(i, sg_->g->vs));
    found += to.found[i];
  }
  return found;
}

// Searches the transactions where it is not found yet, until it is missing from
// more than may_lack; returns in how many it is found.  Small ones come first:
// there a search is short, and the candidate is missing most often.
template <class Image>
int occurrence_finder::search_open(const row_places<Image> &to, int may_lack) {
  int found = 0;
  int lacking = 0;
  for (const bool small : {true, false}) {
    for (int i = 0; i < to.count; i++) {
      if (to.found[i] || profiles_->is_small(to.tids[i]) != small)
        continue;
      to.found[i] = search(to.tids[i], to.row(i, sg_->g->vs));
      found += to.found[i];
      lacking += !to.found[i];
      if (lacking > may_lack)
        return found;
    }
  }
  return found;
}

// Tries a transaction by a search, which finds the candidate wherever it is.
template <class Image> bool occurrence_finder::search(int tid, Image *row) {
  if (sg_->g->es > profiles_->graph_at(tid)->es)
    return false;
  poll_.step(search_cost);
  if (!is_planned_) {
    plan_.set_rarest_first(sg_->g, *profiles_);
    image_.resize(index(sg_->g->vs));
  }
  is_planned_ = true;
  if (!plan_.find(*profiles_, tid, image_.data()))
    return false;
  std::copy(image_.begin(), image_.end(), row);
  return true;
}

// Moves what belongs to the transactions found together.
template <class Image>
void occurrence_finder::close_gaps(const row_places<Image> &to) {
  const int vs = sg_->g->vs;
  int *const tids = ksstack_array<int>(sg_->tid);
  int kept = 0;
  for (int i = 0; i < to.count; i++) {
    if (!to.found[i])
      continue;
    tids[kept] = tids[i];
    if (to.are_kept && kept < i)
      std::copy_n(to.row(i, vs), vs, to.row(kept, vs));
    kept++;
  }
  sg_->tid->count = kept;
  if (sg_->rows)
    sg_->rows->count = kept;
}

} // namespace kestro
