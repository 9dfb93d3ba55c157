// The program kestro on any number of threads: KESTRO_JOBS tells how many, one
// without it.
//
// It calls itself kestro whatever its file is called, so that all it prints can
// be compared with what kestro prints.

#include <cstdlib>

#include "driver/command.h"

int main(int argc, char **argv) {
  const char *jobs = getenv("KESTRO_JOBS");
  char name[] = "kestro";
  if (argc > 0)
    argv[0] = name;
  return kestro::run_command(
      argc, argv, jobs ? static_cast<int>(strtol(jobs, nullptr, 10)) : 1);
}
