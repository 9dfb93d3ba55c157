// Comparators by subtraction.
//
// The difference wraps around where it does not fit an int: the sorted sets
// hold ids, which are never that far apart.

#include "base/comparators.h"

#include <cstring>

namespace kestro {

static int difference(int a, int b) {
  return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}

int compar_int(const void *a, const void *b) {
  return difference(*static_cast<const int *>(a), *static_cast<const int *>(b));
}

int compar_str(const void *a, const void *b) {
  return strcmp(*static_cast<const char *const *>(a),
                *static_cast<const char *const *>(b));
}

int compare_int_arrays(const int *a, const int *b, int n) {
  for (int i = 0; i < n; i++)
    if (a[i] != b[i])
      return difference(a[i], b[i]);
  return 0;
}

} // namespace kestro
