// Canonical labelling by plain calls, for tests that label graphs here and
// there: one labeller per thread, and what is known of the form it made last.
#pragma once

#include "cl/canonical.h"

namespace kestro {

struct thread_labeller {
  labeller forms;
  canonical_form last = {0, true, true};
};
inline thread_local thread_labeller canonical_calls;

// The threshold of this thread's labeller; 5 at first.
inline void cl_set_stabilizer_threshold(int n) {
  canonical_calls.forms = labeller(n);
}
inline int cl_get_stabilizer_threshold() {
  return canonical_calls.forms.stabilizer_threshold();
}

// Brings g into canonical form and returns its key.
inline uint32_t cl_canonicalize_graph(graph *g) {
  canonical_calls.last = canonical_calls.forms.canonicalize(g);
  return canonical_calls.last.key;
}
// What that showed of the graph labelled last.
inline bool cl_form_is_invariant() { return canonical_calls.last.invariant; }
inline bool cl_form_is_rigid() { return canonical_calls.last.rigid; }

// Frees the work arrays; the threshold stays.
inline void cl_free_work_area() {
  cl_set_stabilizer_threshold(cl_get_stabilizer_threshold());
}

} // namespace kestro
