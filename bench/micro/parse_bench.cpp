// Reading a transaction file: the label pass, and the transactions.
//
// Both read the whole file, which the page cache holds after the first time,
// so what is measured is scanning and look-ups, in bytes of text per second.

#include <benchmark/benchmark.h>

#include <filesystem>

#include "graph/transactions.h"
#include "micro/benchmarks.h"

namespace kestro {

static void set_bytes(benchmark::State &state, const loaded_file &db) {
  const auto bytes = std::filesystem::file_size(db.file());
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

static void build_labels(benchmark::State &state, const loaded_file &db) {
  for (auto _ : state) {
    label_set_ptr labels(label_set_create());
    label_set_build(read_file(db.file().c_str()), labels.get());
  }
  set_bytes(state, db);
}

static void read_transactions(benchmark::State &state, const loaded_file &db) {
  for (auto _ : state)
    graph_list_ptr read(
        graph_read_transactions(read_file(db.file().c_str()), db.labels()));
  set_bytes(state, db);
}

void register_parse_benchmarks(const loaded_file &db) {
  const auto add = [&](const char *name, auto function) {
    benchmark::RegisterBenchmark(name, [&db,
                                        function](benchmark::State &state) {
      function(state, db);
    })->Unit(benchmark::kMillisecond);
  };
  add("parse/labels", build_labels);
  add("parse/transactions", read_transactions);
}

} // namespace kestro
