// Finding the transactions that a candidate occurs in.
#pragma once

#include "cl/search_plan.h"
#include "mining/edge_placement.h"
#include "mining/sg_set.h"

namespace kestro {

// Finds them for one candidate after another; each thread has its own.
class occurrence_finder {
public:
  // Borrows the profiles and the slots of the transactions.  Finding throws
  // interrupted when stop, which may be null, says so.
  occurrence_finder(const graph_profiles *profiles, const edge_slots *slots,
                    const interruption *stop = nullptr)
      : profiles_(profiles), slots_(slots), plan_(stop), poll_(stop, 2048) {}

  // Turns sg's tid from a bound into the transactions that sg occurs in, and
  // returns their number; prev holds sg's parents.  Fills sg's rows where sg
  // has been given an empty stack for them.  Stops as soon as that number is
  // sure to be below minsup; tid is incomplete then.
  int find(subgraph *sg, const sg_set *prev, int minsup);

private:
  bool has_byte_rows(const sg_set *prev) const;
  template <class Image> int find_all(const sg_set *prev, int minsup);
  template <class Image>
  int extend_all(const subgraph *parent, const row_places<Image> &to);
  template <class Image>
  int extend_open(const subgraph *parent, const row_places<Image> &to);
  template <class Image>
  int search_open(const row_places<Image> &to, int may_lack);
  template <class Image> bool search(int tid, Image *row);
  template <class Image> void close_gaps(const row_places<Image> &to);

  const graph_profiles *profiles_;
  const edge_slots *slots_;
  subgraph *sg_ = nullptr; // the candidate
  edge_placement placement_;
  search_plan plan_;
  bool is_planned_ = false; // plan_ is sg_'s
  xvector<char> found_;     // by position in the bound
  xvector<int> image_;
  xvector<uint16_t> row_;  // for a row that is not kept
  interruption_poll poll_; // a step is an edge placed
};

} // namespace kestro
