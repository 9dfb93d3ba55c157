// Runs a program whose every write of several bytes to a file is cut to half of
// them:
//
//   short_writes PROGRAM [ARGUMENT ...]
//
// Writes to pipes are left alone: a sanitizer looks by them whether memory can
// be read.
// The exit status is the program's; 99 when it cannot be traced or is ended by
// a signal.

#include <elf.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

static constexpr int failed = 99;
static constexpr int at_call = SIGTRAP | 0x80; // PTRACE_O_TRACESYSGOOD

#if defined(__x86_64__)
static auto &number_of(user_regs_struct &r) { return r.orig_rax; }
static auto &descriptor_of(user_regs_struct &r) { return r.rdi; }
static auto &length_of(user_regs_struct &r) { return r.rdx; }
#elif defined(__aarch64__)
static auto &number_of(user_regs_struct &r) { return r.regs[8]; }
static auto &descriptor_of(user_regs_struct &r) { return r.regs[0]; }
static auto &length_of(user_regs_struct &r) { return r.regs[2]; }
#else
#error "which registers hold a system call's number and its arguments?"
#endif

static bool is_file(pid_t process, int descriptor) {
  char name[64];
  snprintf(name, sizeof name, "/proc/%d/fd/%d", process, descriptor);
  struct stat status;
  return stat(name, &status) == 0 && S_ISREG(status.st_mode);
}

// At the entry to a system call.
static void shorten_write(pid_t traced) {
  user_regs_struct registers;
  iovec all = {&registers, sizeof registers};
  if (ptrace(PTRACE_GETREGSET, traced, NT_PRSTATUS, &all) ||
      number_of(registers) != SYS_write || length_of(registers) < 2 ||
      !is_file(traced, static_cast<int>(descriptor_of(registers))))
    return;
  length_of(registers) /= 2;
  ptrace(PTRACE_SETREGSET, traced, NT_PRSTATUS, &all);
}

// Follows the traced program from call to call; returns its exit status.
static int follow(pid_t traced) {
  bool inside = false;              // a system call
  int status = W_STOPCODE(SIGSTOP); // as main() has seen it
  int signal = 0;
  while (ptrace(PTRACE_SYSCALL, traced, nullptr, signal) == 0 &&
         waitpid(traced, &status, 0) == traced && WIFSTOPPED(status)) {
    const int stop = WSTOPSIG(status);
    signal = stop == at_call || stop == SIGTRAP ? 0 : stop; // ours, not its own
    if (stop != at_call)
      continue;
    inside = !inside;
    if (inside)
      shorten_write(traced);
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : failed;
}

int main(int argc, char **argv) {
  if (argc < 2)
    return failed;
  const pid_t child = fork();
  if (child == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
    execv(argv[1], argv + 1);
    _exit(failed);
  }
  int status;
  if (child == -1 || waitpid(child, &status, 0) != child ||
      !WIFSTOPPED(status) ||
      ptrace(PTRACE_SETOPTIONS, child, nullptr,
             PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL))
    return failed;
  return follow(child);
}
