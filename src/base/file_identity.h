// Whether two names lead to one file.
#pragma once

#include <sys/stat.h>

#include <cstdio>

namespace kestro {

// A regular file as such, whatever names and links lead to it.  Nothing is the
// same as a device, a pipe, a folder or a file that cannot be reached: what is
// in a regular file is lost when it is opened for writing.
class file_identity {
public:
  // Dies with "can't open a file" when the system does not tell.
  explicit file_identity(const char *path);
  explicit file_identity(FILE *stream); // of the file behind it, if any

  bool is_same(const file_identity &other) const {
    return regular_ && other.regular_ && device_ == other.device_ &&
           number_ == other.number_;
  }

  bool is_regular() const { return regular_; }

private:
  void take(const struct stat &status);

  bool regular_ = false;
  dev_t device_ = 0;
  ino_t number_ = 0;
};

} // namespace kestro
