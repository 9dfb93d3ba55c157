// Subgraph isomorphism of patterns against transactions.
//
// One iteration looks every frequent pattern of a size up in every transaction
// that is large enough, as support counting does where TID lists bound
// nothing: so both found and missed searches are in the mean, and the counter
// "found" tells their mixture.  The order is chosen by each search, or chosen
// once per pattern and followed by the rest.

#include <benchmark/benchmark.h>

#include "micro/benchmarks.h"
#include "reference/cl/isomorphism_calls.h"
#include "reference/cl/subgraph_isomorphism.h"

namespace kestro {

namespace {

struct tally {
  int64_t searches = 0;
  int64_t found = 0;
};

} // namespace

static void search_all(const graph *pattern, const graph_list *transactions,
                       bool follow, tally *sum) {
  const auto vs = static_cast<size_t>(pattern->vs);
  xvector<int> map(vs);
  xvector<int> order(vs);
  bool have_order = false;
  for (int tid = 0; tid < transactions->count; tid++) {
    const graph *t = graph_list_at(transactions, tid);
    if (pattern->es > t->es || pattern->vs > t->vs)
      continue;
    const int found = follow && have_order
                          ? graph_find_isomorphism_by_order(
                                pattern, t, map.data(), order.data())
                          : graph_find_isomorphism_and_order(
                                pattern, t, map.data(), order.data());
    have_order = have_order || found;
    sum->searches++;
    sum->found += found;
  }
}

static void measure(benchmark::State &state, const loaded_file &db,
                    bool follow) {
  const int size = static_cast<int>(state.range(0));
  const search_levels levels = mine_until(db, size + 1);
  const sg_set *patterns = levels.children.get();
  tally sum;
  for (auto _ : state)
    for (int i = 0; i < sg_set_size(patterns); i++)
      search_all(sg_set_get(patterns, i)->g, db.transactions(), follow, &sum);
  state.SetItemsProcessed(sum.searches);
  state.counters["found"] =
      static_cast<double>(sum.found) / static_cast<double>(sum.searches);
  graph_free_label_matrix();
}

void register_isomorphism_benchmarks(const loaded_file &db) {
  const auto add = [&](const char *name, bool follow) {
    benchmark::RegisterBenchmark(
        name,
        [&db, follow](benchmark::State &state) { measure(state, db, follow); })
        ->Arg(2)
        ->Arg(4)
        ->Arg(6)
        ->Unit(benchmark::kMillisecond);
  };
  add("isomorphism/chosen_order", false);
  add("isomorphism/given_order", true);
}

} // namespace kestro
