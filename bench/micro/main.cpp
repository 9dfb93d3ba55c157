// kestro_bench [--database=FILE] [--benchmark_...]
//
// The database is the same for all benchmarks that need one: FILE, or a drawn
// one.  Everything else is drawn by the benchmarks from fixed seeds.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <string_view>

#include "base/error.h"
#include "micro/benchmarks.h"

// Takes --database=FILE out of the arguments; empty when it is not given.
static std::string take_database_flag(int *argc, char **argv) {
  constexpr std::string_view flag = "--database=";
  std::string name;
  int kept = 1;
  for (int i = 1; i < *argc; i++) {
    const std::string_view argument = argv[i];
    if (argument.substr(0, flag.size()) == flag)
      name = argument.substr(flag.size());
    else
      argv[kept++] = argv[i];
  }
  *argc = kept;
  return name;
}

int main(int argc, char **argv) {
  const std::string name = take_database_flag(&argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 2;
  try {
    const kestro::loaded_file db(name);
    kestro::register_parse_benchmarks(db);
    kestro::register_canonical_benchmarks();
    kestro::register_closure_benchmarks(db);
    kestro::register_isomorphism_benchmarks(db);
    benchmark::RunSpecifiedBenchmarks();
  } catch (const kestro::fatal_error &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
