// Whether two names lead to one file.
#pragma once

#include <sys/stat.h>

#include <cstdio>

namespace kestro {

// Which regular file a name or a stream leads to.  Two identities of one
// regular file are the same, whatever names and links lead to it.  Only regular
// files are compared, because only they lose what they hold when they are
// opened for writing: a device, a pipe, a folder and a file that cannot be
// reached are the same as nothing, themselves included.
class file_identity {
public:
  // Dies with "can't open a file" when the system refuses to identify the file.
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
