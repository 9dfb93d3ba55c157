#include "base/output_lock.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/fatal.h"
#include "support/scratch_folder.h"

// What flock says instead of locking; 0: it locks.
static int flock_failure = 0;
static int flock_interruptions = 0;

// Stands before the C library's for the whole test program.
extern "C" int flock(int descriptor, int operation) noexcept {
  if (flock_interruptions > 0) {
    flock_interruptions--;
    errno = EINTR;
    return -1;
  }
  if (flock_failure) {
    errno = flock_failure;
    return -1;
  }
  using function = int(int, int);
  static auto *const real =
      reinterpret_cast<function *>(dlsym(RTLD_NEXT, "flock"));
  return real(descriptor, operation);
}

// The same of the other kind of lock.
static int range_lock_failure = 0;

extern "C" int fcntl(int descriptor, int command, ...) {
  using function = int(int, int, void *);
  va_list arguments;
  va_start(arguments, command);
  void *const argument = va_arg(arguments, void *);
  va_end(arguments);
  if (command == F_OFD_SETLK && range_lock_failure) {
    errno = range_lock_failure;
    return -1;
  }
  static auto *const real =
      reinterpret_cast<function *>(dlsym(RTLD_NEXT, "fcntl"));
  return real(descriptor, command, argument);
}

namespace kestro {
namespace {

class OutputLock : public testing::Test {
protected:
  ~OutputLock() override {
    flock_failure = flock_interruptions = range_lock_failure = 0;
  }

  std::string refusal() const {
    return fatal_text([&] { output_lock(name.c_str()); });
  }

  scratch_folder folder;
  std::string name = folder.name("x.fp");
  std::string held =
      "can't write a file '" + name + "': another run is writing it\n";
};

} // namespace

TEST_F(OutputLock, MakesTheFile) {
  const output_lock lock(name.c_str());
  EXPECT_EQ(folder.read("x.fp"), "");
}

TEST_F(OutputLock, LeavesWhatIsThere) {
  folder.write("x.fp", "old");
  const output_lock lock(name.c_str());
  EXPECT_EQ(folder.read("x.fp"), "old");
}

TEST_F(OutputLock, KeepsOthersAway) {
  folder.write("x.fp", "old");
  const output_lock lock(name.c_str());
  EXPECT_EQ(refusal(), held);
  EXPECT_EQ(folder.read("x.fp"), "old");
}

TEST_F(OutputLock, KeepsOtherThreadsAway) {
  const output_lock lock(name.c_str());
  std::string text;
  std::thread([&] { text = refusal(); }).join();
  EXPECT_EQ(text, held);
}

TEST_F(OutputLock, KnowsTheFileByEveryName) {
  const output_lock lock(name.c_str());
  const std::string link = folder.name("link");
  std::filesystem::create_symlink("x.fp", link);
  EXPECT_EQ(fatal_text([&] { output_lock(link.c_str()); }),
            "can't write a file '" + link + "': another run is writing it\n");
}

TEST_F(OutputLock, EndsWithItsOwner) {
  { const output_lock lock(name.c_str()); }
  EXPECT_NO_THROW(output_lock(name.c_str()));
}

TEST_F(OutputLock, MovesWithItsOwner) {
  std::optional<output_lock> first(name.c_str());
  std::optional<output_lock> second(std::move(*first));
  first.reset();
  EXPECT_EQ(refusal(), held);
  second.reset();
  EXPECT_NO_THROW(output_lock(name.c_str()));
}

TEST_F(OutputLock, EndsWithAKilledProcess) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    const output_lock lock(name.c_str());
    if (write(ready[1], "x", 1) == 1)
      pause();
    _exit(1);
  }
  char byte;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  EXPECT_EQ(refusal(), held);
  kill(child, SIGKILL);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  EXPECT_NO_THROW(output_lock(name.c_str()));
  close(ready[0]);
  close(ready[1]);
}

TEST_F(OutputLock, FileSystemsWithoutLocksAreShared) {
  for (const int reason : {ENOLCK, ENOSYS, EOPNOTSUPP, EINVAL}) {
    flock_failure = range_lock_failure = reason;
    const output_lock lock(name.c_str());
    EXPECT_NO_THROW(output_lock(name.c_str()));
  }
}

TEST_F(OutputLock, FileSystemsThatKnowOneKindOfLockAreNotShared) {
  flock_failure = ENOLCK;
  std::optional<output_lock> lock(name.c_str());
  EXPECT_EQ(refusal(), held);
  lock.reset();
  EXPECT_NO_THROW(output_lock(name.c_str()));
}

TEST_F(OutputLock, RefusedAccessIsALockToo) {
  flock_failure = ENOLCK;
  range_lock_failure = EACCES;
  EXPECT_EQ(refusal(), held);
}

TEST_F(OutputLock, InterruptionsAreNoRefusal) {
  flock_interruptions = 2;
  const output_lock lock(name.c_str());
  EXPECT_EQ(flock_interruptions, 0);
  EXPECT_EQ(refusal(), held);
}

TEST_F(OutputLock, DevicesAreShared) {
  const output_lock lock("/dev/null");
  EXPECT_NO_THROW(output_lock("/dev/null"));
}

TEST_F(OutputLock, PipesAreRefusedWithAReaderAndWithout) {
  ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
  const std::string text = "can't write a file '" + name + "': it is a pipe\n";
  EXPECT_EQ(refusal(), text);
  const int reader = open(name.c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_EQ(refusal(), text);
  close(reader);
}

TEST_F(OutputLock, SocketsAreRefused) {
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  ASSERT_LT(name.size(), sizeof address.sun_path);
  name.copy(address.sun_path, name.size());
  ASSERT_EQ(
      bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address),
      0);
  EXPECT_EQ(refusal(), "can't write a file '" + name + "': it is a socket\n");
  close(listener);
}

TEST_F(OutputLock, FoldersCannotBeOpenedLater) {
  EXPECT_NO_THROW(output_lock(folder.name("").c_str()));
}

TEST_F(OutputLock, MissingFolderIsFatal) {
  const std::string nowhere = folder.name("none/x.fp");
  EXPECT_EQ(fatal_text([&] { output_lock(nowhere.c_str()); }),
            "can't open a file '" + nowhere + "'\n");
}

} // namespace kestro
