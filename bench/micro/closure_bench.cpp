// Registration of candidates, which is the downward-closure test and what comes
// before it.
//
// All candidates of a size that passed the test are offered again, each as one
// of its parents plus an edge, in three settings: against the level they came
// from (all are accepted), against that level without every other pattern (most
// are rejected, and go to the failed candidates), and a second time (all are
// duplicates).  Nothing is known of their parents beforehand.
// One iteration offers them all.

#include <benchmark/benchmark.h>

#include "micro/benchmarks.h"
#include "mining/parents.h"
#include "mining/registration.h"

namespace kestro {

// Copies of every step-th record, in order.
static sg_set_ptr copy_records(const sg_set *s, int step) {
  sg_set_ptr copy(sg_set_create());
  for (int i = 0; i < sg_set_size(s); i += step)
    sg_set_push(copy.get(), sg_ptr(sg_copy(sg_set_get(s, i))));
  return copy;
}

// The candidates as extensions of every step-th pattern of the level below;
// those that have no parent among these are left out.
static xvector<extension> extensions_of(const sg_set *candidates, int step) {
  xvector<extension> found;
  for (int i = 0; i < sg_set_size(candidates); i++) {
    const subgraph *sg = sg_set_get(candidates, i);
    int j = 0;
    while (j < sg_parent_size(sg) && sg_parent_at(sg, j)->pid % step != 0)
      j++;
    if (j == sg_parent_size(sg))
      continue;
    found.push_back(sg_parent_edge(sg, sg_parent_at(sg, j)));
    found.back().pattern /= step;
  }
  return found;
}

static void offer_all(const xvector<extension> &candidates, registration *to) {
  for (const extension &x : candidates)
    sg_offer_extension(x, to);
}

// known: the candidates are registered beforehand.
static void measure(benchmark::State &state, const loaded_file &db, int step,
                    bool known) {
  const search_levels levels = mine_until(db, static_cast<int>(state.range(0)));
  const xvector<extension> candidates =
      extensions_of(levels.candidates.get(), step);
  const sg_set_ptr prev = copy_records(levels.children.get(), step);
  registration seen(prev.get());
  if (known)
    offer_all(candidates, &seen);
  int64_t attempts = 0;
  int64_t accepted = 0;
  for (auto _ : state) {
    registration fresh(prev.get());
    registration *to = known ? &seen : &fresh;
    const registration_counts before = to->counts;
    offer_all(candidates, to);
    attempts += to->counts.attempts - before.attempts;
    accepted += to->counts.accepted - before.accepted;
  }
  state.SetItemsProcessed(attempts);
  state.counters["accepted"] =
      static_cast<double>(accepted) / static_cast<double>(attempts);
}

void register_closure_benchmarks(const loaded_file &db) {
  const auto add = [&](const char *name, int step, bool known) {
    benchmark::RegisterBenchmark(name,
                                 [&db, step, known](benchmark::State &state) {
                                   measure(state, db, step, known);
                                 })
        ->Arg(4)
        ->Arg(6)
        ->Unit(benchmark::kMicrosecond);
  };
  add("closure/accepted", 1, false);
  add("closure/rejected", 2, false);
  add("closure/duplicate", 1, true);
}

} // namespace kestro
