// The threshold of canonical labelling, set for one scope.
#pragma once

#include "reference/cl/canonical.h"
#include "reference/cl/canonical_calls.h"

namespace kestro {

// Sets the threshold of both labellings for one scope.
class threshold_scope {
public:
  explicit threshold_scope(int n) { set(n); }
  ~threshold_scope() { set(5); }
  threshold_scope(const threshold_scope &) = delete;
  threshold_scope &operator=(const threshold_scope &) = delete;

private:
  static void set(int n) {
    cl_set_stabilizer_threshold(n);
    stepwise::cl_set_stabilizer_threshold(n);
  }
};

} // namespace kestro
