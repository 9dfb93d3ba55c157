// The program's body.
//
// Everything below fails by unwinding; here, and nowhere else, a failure
// becomes a text on standard error and an exit status.  It stands apart from
// main() for programs that differ in a setting no option makes.

#include "driver/command.h"

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include "base/basename.h"
#include "base/error.h"
#include "base/output_file.h"
#include "driver/options.h"
#include "driver/run.h"

namespace kestro {

// A process can be started without even a name.
static const char *program_name(int argc, char **argv) {
  return argc > 0 ? argv[0] : "kestro";
}

static int obey(int argc, char **argv, int jobs) {
  options o;
  switch (parse_command_line(argc, argv, &o)) {
  case command::refuse:
    return EXIT_FAILURE;
  case command::show_usage:
    usage(program_name(argc, argv), stdout);
    break;
  case command::run:
    o.jobs = jobs;
    run_kestro(&o, stdout);
    break;
  }
  finish_output(stdout, standard_output);
  return EXIT_SUCCESS;
}

static bool is_closed(int descriptor) {
  return fcntl(descriptor, F_GETFD) == -1;
}

// Makes the failures of writing arrive as such.  False when it cannot.
static bool prepare_outputs() {
  // A file over the size limit is a failed write, not a signal.
  signal(SIGXFSZ, SIG_IGN);
  // The first files opened would take the place of standard streams that are
  // closed, and get the report; a folder, which is always there, cannot.
  const bool no_input = is_closed(STDIN_FILENO);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (is_closed(descriptor) && open("/", O_RDONLY) != descriptor)
      return false;
  if (no_input) // which only kept the place while the others were filled
    close(STDIN_FILENO);
  return true;
}

// Keeps large blocks out of the heap, so that freeing one gives its memory
// back, and a heap that cannot grow, as under some tools, is not asked for
// them. By itself the C library stops doing so once it has seen a large block
// freed. False when there is hardly any memory: the C++ library sets some aside
// at the start, by which it can throw when all is used up; where it got none,
// it would end the process instead.
static bool prepare_memory() {
#ifdef __GLIBC__
  static constexpr int large = 1 << 18; // bytes
  mallopt(M_MMAP_THRESHOLD, large);
#endif
  static constexpr size_t set_aside = 1 << 17; // bytes, and some to spare
  void *volatile block = malloc(set_aside);    // volatile: not to be left out
  const bool found = block != nullptr;
  free(block);
  return found;
}

static int end_without_memory() {
  fprintf(stderr, "xmalloc.c:%d: not enough memory\n", __LINE__);
  return EXIT_FAILURE;
}

int run_command(int argc, char **argv, int jobs) {
  if (!prepare_memory())
    return end_without_memory();
  if (!prepare_outputs())
    return EXIT_FAILURE;
  try {
    return obey(argc, argv, jobs);
  } catch (const check_failure &e) {
    fprintf(stderr, "%s: %s\n", basename(program_name(argc, argv)), e.what());
    abort();
  } catch (const error &e) {
    fprintf(stderr, "%s\n", e.what());
  } catch (const std::bad_alloc &) {
    return end_without_memory();
  } catch (const std::length_error &) { // more than memory can ever hold
    return end_without_memory();
  }
  return EXIT_FAILURE;
}

} // namespace kestro
