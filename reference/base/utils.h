// Small services that no run needs: CPU time with the system's share,
// exchanges, enumeration of k-subsets and permutations.
#pragma once

#include <cstddef>

namespace kestro {

// User plus system CPU time of the process in seconds.
double cpu_time();

// Exchange of two ints, two pairs of ints, two byte ranges of one length.
void swap_ints(int *a, int *b);
void swap_int_pairs(int *a, int *b);
void swap_bytes(void *a, void *b, size_t length);

// Advances an ascending array of k indices out of 0 .. n-1 to the next subset
// in lexicographic order.  The caller stops after C(n, k) subsets; one step
// further fails the assertion "i >= 0".
void next_k_subset(int *subset, int n, int k);

// Advances array to its next permutation in lexicographic order; 0, and the
// array unchanged, when it is already the last one.
int next_permutation(int *array, int n);

} // namespace kestro
