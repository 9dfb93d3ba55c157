// Locks on outputs.
//
// The lock belongs to a descriptor of its own, so it outlives every stream that
// is opened and closed on the file meanwhile, and the system lets go of it when
// the process ends, however that happens.  On SMB shares a lock would keep
// these streams away too, so there is none.

#include "base/output_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "base/error.h"

namespace kestro {

[[noreturn]] static void refuse(const char *name, const char *reason) {
  throw fatal_error("can't write a file '" + std::string(name) +
                    "': " + reason + "\n");
}

void refuse_pipe(const char *name) {
  struct stat status;
  if (stat(name, &status) != 0)
    return; // opening it reports what is wrong, if anything
  if (S_ISFIFO(status.st_mode))
    refuse(name, "it is a pipe");
  if (S_ISSOCK(status.st_mode))
    refuse(name, "it is a socket");
}

// Whether there is something to lock: a regular file, or one to be made.
static bool is_lockable(const char *name) {
  struct stat status;
  return stat(name, &status) != 0 || S_ISREG(status.st_mode);
}

// Whether an open file is on a share that keeps everybody away from a locked
// file but the descriptor that locked it.
static bool is_on_smb(int descriptor) {
  struct statfs status;
  if (fstatfs(descriptor, &status) != 0)
    return false;
  for (const uint32_t kind : {0xfe534d42U, 0xff534d42U, 0x517bU})
    if (static_cast<uint32_t>(status.f_type) == kind)
      return true;
  return false;
}

// Both kinds of lock: 0 with the lock, else the reason.
static int lock_whole(int descriptor) {
  return flock(descriptor, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
}

static int lock_range(int descriptor) {
  struct flock range = {}; // of all bytes there ever are
  range.l_type = F_WRLCK;
  return fcntl(descriptor, F_OFD_SETLK, &range) == 0 ? 0 : errno;
}

// Whether somebody else holds the lock of an open file.  File systems that
// refuse one kind may know the other.
static bool is_held(int descriptor) {
  for (const auto lock : {lock_whole, lock_range}) {
    int reason;
    do
      reason = lock(descriptor);
    while (reason == EINTR);
    if (reason == 0)
      return false;
    if (reason == EWOULDBLOCK || reason == EACCES)
      return true;
  }
  return false;
}

output_lock::output_lock(const char *name) {
  refuse_pipe(name);
  if (!is_lockable(name))
    return;
  // Not to wait, should a pipe have come in between.
  const int flags = O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC;
  descriptor_ = open(name, flags, 0666);
  if (descriptor_ == -1)
    throw fatal_error("can't open a file '" + std::string(name) + "'\n");
  if (!is_on_smb(descriptor_) && is_held(descriptor_)) {
    close(descriptor_);
    refuse(name, "another run is writing it");
  }
}

output_lock::~output_lock() {
  if (descriptor_ != -1)
    close(descriptor_);
}

} // namespace kestro
