// Whether two names lead to one file.
#pragma once

#include <sys/stat.h>

#include <cstdio>

namespace kestro {

// A regular file as such, whatever names and links lead to it.  Nothing is the
// same as a device, a pipe, a folder or a file that does not exist: these lose
// nothing by being written.
class file_identity {
public:
  explicit file_identity(const char *path);
  explicit file_identity(FILE *stream); // of the file behind it, if any

  bool is_same(const file_identity &other) const {
    return regular_ && other.regular_ && device_ == other.device_ &&
           number_ == other.number_;
  }

private:
  void take(const struct stat &status);

  bool regular_ = false;
  dev_t device_ = 0;
  ino_t number_ = 0;
};

} // namespace kestro
