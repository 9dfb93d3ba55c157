// Opening files, and checking that they were read to the end.
#pragma once

#include <cstdio>
#include <memory>

namespace kestro {

struct file_closer {
  void operator()(FILE *stream) const { fclose(stream); }
};
// Owner of an open stream.
using file_ptr = std::unique_ptr<FILE, file_closer>;

// The opened file; the caller closes it.  Dies with "can't open a file '...'",
// without a place in front, when fopen fails.  All of kestro opens files here.
FILE *open_file(const char *path, const char *mode);

// After the last read from stream: dies with "can't read a file 'PATH'" when an
// error ended the reading, so that a part is never taken for the whole.  A
// folder reads as empty.
void check_read(FILE *stream, const char *path);

} // namespace kestro
