// Comparators for sorted arrays and sets.
#pragma once

namespace kestro {

// The kind of function that qsort and bsearch take: addresses of two elements
// in, negative, zero or positive out.
using comparator = int (*)(const void *, const void *);

// Differences of the first unequal key.  compar_int compares ints;
// compar_str the strings whose addresses are stored at a and b;
// compare_int_arrays n ints each (0 for n <= 0).
int compar_int(const void *a, const void *b);
int compar_str(const void *a, const void *b);
int compare_int_arrays(const int *a, const int *b, int n);

} // namespace kestro
