// Small services: files and CPU time, path names, comparators.
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

// User CPU time of the process in seconds.
double user_cpu_time();

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

} // namespace kestro
