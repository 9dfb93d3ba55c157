// The last part of a path, without a copy.

#include "base/basename.h"

#include <cstring>

namespace kestro {

const char *basename(const char *path) {
  const char *slash = strrchr(path, '/');
  return slash ? slash + 1 : path;
}

} // namespace kestro
