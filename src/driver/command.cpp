// The program's body.
//
// Everything below fails by unwinding; here, and nowhere else, a failure
// becomes a text on standard error and an exit status.  It stands apart from
// main() for programs that differ in a setting no option makes.

#include "driver/command.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include "base/error.h"
#include "base/utils.h"
#include "driver/options.h"
#include "driver/run.h"

namespace kestro {

static int obey(int argc, char **argv, int jobs) {
  options o;
  switch (parse_command_line(argc, argv, &o)) {
  case command::refuse:
    return EXIT_FAILURE;
  case command::show_usage:
    usage(argv[0], stdout);
    return EXIT_SUCCESS;
  case command::run:
    o.jobs = jobs;
    run_kestro(&o, stdout);
    return EXIT_SUCCESS;
  }
  return EXIT_FAILURE;
}

int run_command(int argc, char **argv, int jobs) {
  try {
    return obey(argc, argv, jobs);
  } catch (const fatal_error &e) {
    fputs(e.what(), stderr);
  } catch (const check_failure &e) {
    fprintf(stderr, "%s: %s", basename(argv[0]), e.what());
    abort();
  } catch (const std::bad_alloc &) {
    fprintf(stderr, "xmalloc.c:%d: not enough memory\n", __LINE__);
  } catch (const std::length_error &) { // more than memory can ever hold
    fprintf(stderr, "xmalloc.c:%d: not enough memory\n", __LINE__);
  }
  return EXIT_FAILURE;
}

} // namespace kestro
