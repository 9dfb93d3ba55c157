// All k-subsets and all permutations, one after the other.
#pragma once

namespace kestro {

// Advances an ascending array of k indices out of 0 .. n-1 to the next subset
// in lexicographic order.  The caller stops after C(n, k) subsets; one step
// further fails the assertion "i >= 0".
void next_k_subset(int *subset, int n, int k);

// Advances array to its next permutation in lexicographic order; 0, and the
// array unchanged, when it is already the last one.
int next_permutation(int *array, int n);

} // namespace kestro
