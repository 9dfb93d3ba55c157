// Exchanges of ints and byte ranges.

#include "reference/base/exchange.h"

#include <algorithm>

namespace kestro {

void swap_ints(int *a, int *b) { std::swap(*a, *b); }

void swap_int_pairs(int *a, int *b) { std::swap_ranges(a, a + 2, b); }

void swap_bytes(void *a, void *b, size_t length) {
  char *first = static_cast<char *>(a);
  std::swap_ranges(first, first + length, static_cast<char *>(b));
}

} // namespace kestro
