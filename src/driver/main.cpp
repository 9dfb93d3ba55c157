// The program kestro: command line in, exit status out.
//
// 0: done, or usage shown.  1: a fatal error, told on standard error.  A failed
// internal check aborts after its report.

#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include "base/error.h"
#include "base/utils.h"
#include "driver/options.h"
#include "driver/run.h"

static int run_command(int argc, char **argv) {
  kestro::options o;
  switch (kestro::parse_command_line(argc, argv, &o)) {
  case kestro::command::refuse:
    return EXIT_FAILURE;
  case kestro::command::show_usage:
    kestro::usage(argv[0], stdout);
    return EXIT_SUCCESS;
  case kestro::command::run:
    kestro::run_kestro(&o, stdout);
    return EXIT_SUCCESS;
  }
  return EXIT_FAILURE;
}

int main(int argc, char **argv) {
  try {
    return run_command(argc, argv);
  } catch (const kestro::fatal_error &e) {
    fputs(e.what(), stderr);
  } catch (const kestro::check_failure &e) {
    fprintf(stderr, "%s: %s", kestro::basename(argv[0]), e.what());
    abort();
  } catch (const std::bad_alloc &) {
    fprintf(stderr, "xmalloc.c:%d: not enough memory\n", __LINE__);
  } catch (const std::length_error &) { // more than memory can ever hold
    fprintf(stderr, "xmalloc.c:%d: not enough memory\n", __LINE__);
  }
  return EXIT_FAILURE;
}
