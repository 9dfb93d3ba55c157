// Opening files and the check after the last read.
//
// A folder can be opened but not read; such a failure counts as end of input.

#include "base/open_file.h"

#include <sys/stat.h>

#include <string>

#include "base/error.h"

namespace kestro {

FILE *open_file(const char *path, const char *mode) {
  FILE *stream = fopen(path, mode);
  if (!stream)
    throw fatal_error("can't open a file '" + std::string(path) + "'", path);
  return stream;
}

static bool is_folder(FILE *stream) {
  struct stat status;
  return fstat(fileno(stream), &status) == 0 && S_ISDIR(status.st_mode);
}

void check_read(FILE *stream, const char *path) {
  if (ferror(stream) && !is_folder(stream))
    throw fatal_error("can't read a file '" + std::string(path) + "'", path);
}

} // namespace kestro
