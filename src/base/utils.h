// Small services: files and CPU time, path names, comparators and swaps,
// enumeration of k-subsets and permutations.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>

namespace kestro {

// The kind of function that qsort and bsearch take: addresses of two elements
// in, negative, zero or positive out.
using comparator = int (*)(const void *, const void *);

struct file_closer {
  void operator()(FILE *stream) const { fclose(stream); }
};
// Owner of an open stream.
using file_ptr = std::unique_ptr<FILE, file_closer>;

// The opened file; the caller closes it.  Dies with "can't open a file '...'",
// without a place in front, when fopen fails.  Every file is opened here.
FILE *open_file(const char *path, const char *mode);

// After the last read from stream: dies with "can't read a file 'PATH'" when an
// error ended the reading, so that a part is never taken for the whole.  A
// folder reads as empty.
void check_read(FILE *stream, const char *path);

// User CPU time of the process in seconds, and user plus system time.
double user_cpu_time();
double cpu_time();

// What follows the last "/" of path, as an address inside path.
const char *basename(const char *path);

// Replaces every newline of text by a terminating zero; returns text, which so
// ends at its first newline.
char *chomp_newlines(char *text);

// Differences of the first unequal key.  compar_int compares ints;
// compar_str the strings whose addresses are stored at a and b;
// compare_int_arrays n ints each (0 for n <= 0).
int compar_int(const void *a, const void *b);
int compar_str(const void *a, const void *b);
int compare_int_arrays(const int *a, const int *b, int n);

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
