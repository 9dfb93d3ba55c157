// Files are identified by device and inode number, which all links to a file
// share.

#include "base/file_identity.h"

#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "base/error.h"

namespace kestro {

// Whether the last failure means that no file can be reached by a name.
static bool is_out_of_reach() {
  for (const int reason : {ENOENT, ENOTDIR, EACCES, ELOOP, ENAMETOOLONG})
    if (errno == reason)
      return true;
  return false;
}

file_identity::file_identity(const char *path) {
  struct stat status;
  if (stat(path, &status) == 0)
    take(status);
  else if (!is_out_of_reach())
    throw fatal_error("can't open a file '" + std::string(path) + "'\n");
}

file_identity::file_identity(FILE *stream) {
  struct stat status;
  const int descriptor = fileno(stream); // -1 for a stream into memory
  if (descriptor != -1 && fstat(descriptor, &status) == 0)
    take(status);
}

void file_identity::take(const struct stat &status) {
  regular_ = S_ISREG(status.st_mode);
  device_ = status.st_dev;
  number_ = status.st_ino;
}

} // namespace kestro
