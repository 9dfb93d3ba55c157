// Canonical labelling: one vertex order for all isomorphic graphs.
#pragma once

#include <cstdint>

#include <kestro/form.h>

#include "cl/canonical_search.h"
#include "cl/colouring.h"
#include "graph/graph.h"

namespace kestro {

// What is known of a graph that has been brought into canonical form.
struct canonical_form {
  uint32_t key;   // the graph's
  bool invariant; // the form is the same whatever order the vertices came in;
                  // false for some graphs in which many vertices look alike,
                  // where the search can end differently
  bool rigid;     // refinement alone told all vertices apart, so the graph has
                  // no automorphism but the identity
};

// Brings graphs into canonical form, one after another.  Each thread has its
// own, since the work arrays are used again.
class labeller {
public:
  // The size, exclusive, of the largest cell up to which refined graphs are
  // searched exhaustively; at or above it the individualising search runs.
  static constexpr int default_threshold = 5;

  explicit labeller(int stabilizer_threshold = default_threshold,
                    form kind = form::prescribed,
                    const interruption *stop = nullptr)
      : threshold_(stabilizer_threshold), form_(kind) {
    work_.poll = interruption_poll(stop, 16384);
  }

  // Reorders the vertices of g, which has no marks, in place into canonical
  // order, vid along with them, and sets its key.  Costs a few passes over the
  // edges when refinement tells all vertices apart; else a search.  Throws
  // interrupted, with g as it was, when stop says so.
  canonical_form canonicalize(graph *g);

  int stabilizer_threshold() const { return threshold_; }
  // Steps of the individualising search so far.
  uint64_t stabilizer_calls() const { return calls_; }

private:
  canonical_form find_order(const graph *g);
  void relabel(graph *g);

  int threshold_;
  form form_;
  uint64_t calls_ = 0;
  colouring cells_;
  label_cells labels_;
  refinement_work work_;
  xvector<int> next_;   // by vertex, the slot that its next neighbour fills
  xvector<int> arrays_; // a copy of the graph's arrays
};

} // namespace kestro
