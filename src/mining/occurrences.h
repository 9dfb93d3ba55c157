// Finding the transactions that a candidate occurs in.
#pragma once

#include "cl/search_plan.h"
#include "mining/embeddings.h"
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
  // Walks one parent's transactions in step with the candidate's.
  struct parent_cursor {
    const subgraph *parent;
    edge_placement placement;
    int at; // position in the parent's tid
    int row_index(int tid);
  };

  template <class Image> int find_all(int minsup);
  template <class Image> void search_open(int may_lack);
  template <class Image> bool extend(int i, Image *row);
  template <class Image> bool search(int i, Image *row);
  template <class Image> Image *row_of(int i);
  template <class Image> int close_gaps();

  const graph_profiles *profiles_;
  const edge_slots *slots_;
  subgraph *sg_ = nullptr; // the candidate
  int *tids_ = nullptr;    // its bound
  parent_cursor cursors_[2] = {};
  int parents_ = 0; // cursors in use
  search_plan plan_;
  bool is_planned_ = false; // plan_ is sg_'s
  xvector<char> found_;     // by position in the bound
  xvector<int> image_;
  xvector<uint16_t> row_;  // for a row that is not kept
  interruption_poll poll_; // a step is an edge placed
};

} // namespace kestro
