// CPU time, exchanges and enumeration.

#include "reference/base/utils.h"

#include <sys/resource.h>

#include <algorithm>
#include <cassert>

namespace kestro {

double cpu_time() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) *
             1e-6;
}

void swap_ints(int *a, int *b) { std::swap(*a, *b); }

void swap_int_pairs(int *a, int *b) { std::swap_ranges(a, a + 2, b); }

void swap_bytes(void *a, void *b, size_t length) {
  char *first = static_cast<char *>(a);
  std::swap_ranges(first, first + length, static_cast<char *>(b));
}

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
