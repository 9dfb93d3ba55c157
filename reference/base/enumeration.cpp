// Enumeration in lexicographic order, in the caller's array.

#include "reference/base/enumeration.h"

#include <algorithm>
#include <cassert>

namespace kestro {

void next_k_subset(int *subset, int n, int k) {
  int i = k - 1;
  while (i >= 0 && subset[i] >= i + (n - k))
    i--;
  assert(i >= 0);
  subset[i]++;
  for (int j = i + 1; j < k; j++)
    subset[j] = subset[j - 1] + 1;
}

int next_permutation(int *array, int n) {
  int i = n - 2;
  while (i >= 0 && array[i] >= array[i + 1])
    i--;
  if (i < 0)
    return 0;
  int j = n - 1;
  while (array[j] <= array[i])
    j--;
  std::swap(array[i], array[j]);
  std::reverse(array + i + 1, array + n);
  return 1;
}

} // namespace kestro
