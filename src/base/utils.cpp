// Files, CPU time, path names and comparators.
//
// The comparators subtract, with wrap-around where the difference does not fit
// an int: the sorted sets hold ids, which are never that far apart.

#include "base/utils.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <cstring>
#include <string>

#include "base/error.h"

namespace kestro {

static int difference(int a, int b) {
  return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}

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

double user_cpu_time() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec) * 1e-6;
}

const char *basename(const char *path) {
  const char *slash = strrchr(path, '/');
  return slash ? slash + 1 : path;
}

char *chomp_newlines(char *text) {
  for (char *newline = text; (newline = strchr(newline, '\n'));)
    *newline++ = '\0';
  return text;
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
