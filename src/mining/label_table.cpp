// The memory of the counting tables.
//
// A table is allocated in full and zeroed, which trades memory for a single
// counting pass; a product of label counts that no memory could hold ends the
// run as exhausted memory would.

#include "mining/label_table.h"

#include <initializer_list>

namespace kestro {

static int *new_cells(std::initializer_list<int> dimensions) {
  size_t cells = 1;
  for (const int n : dimensions)
    if (__builtin_mul_overflow(cells, static_cast<size_t>(n), &cells))
      die_out_of_memory();
  return static_cast<int *>(xcalloc(cells, sizeof(int)));
}

edge_table::edge_table(int nel, int nvl)
    : nel_(index(nel)), nvl_(index(nvl)), cells_(new_cells({nvl, nvl, nel})) {}

double_edge_table::double_edge_table(int nel, int nvl)
    : nel_(index(nel)), nvl_(index(nvl)),
      cells_(new_cells({nvl, nvl, nvl, nel, nel})) {}

} // namespace kestro
