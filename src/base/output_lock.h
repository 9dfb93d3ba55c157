// The sole right to write a file.
#pragma once

#include <utility>

namespace kestro {

// Dies with "can't write a file 'NAME': it is a pipe", or a socket: nothing
// could be read back from it, and it may wait for a reader for ever.
void refuse_pipe(const char *name);

// Whoever writes an output holds its lock from before the file is emptied until
// it is complete.  Otherwise two runs could write one file at once, mix their
// lines and both report success.  The lock ends with its owner, also when the
// process is killed.
class output_lock {
public:
  // Makes the file unless it is there, and leaves what it holds as it is.  Dies
  // with "can't write a file 'NAME': another run is writing it" when somebody
  // else holds the right, in this process or another; as refuse_pipe() does;
  // and with "can't open a file".  Devices, and file systems that know no locks
  // or only such as keep other descriptors away, are shared freely.
  explicit output_lock(const char *name);
  output_lock(output_lock &&other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  output_lock &operator=(output_lock &&) = delete;
  ~output_lock();

private:
  int descriptor_ = -1; // of the locked file; -1 when there is nothing to lock
};

} // namespace kestro
