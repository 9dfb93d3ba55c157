// One function per file of benchmarks: adds them to the list that main runs.
// db must outlive the run.
#pragma once

#include "micro/inputs.h"

namespace kestro {

void register_parse_benchmarks(const loaded_file &db);
void register_canonical_benchmarks();
void register_closure_benchmarks(const loaded_file &db);
void register_isomorphism_benchmarks(const loaded_file &db);

} // namespace kestro
