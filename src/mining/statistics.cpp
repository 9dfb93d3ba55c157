// Per-size counters of a run.
//
// Either kind is a stack of ints indexed by size, which grows to the largest
// size counted.  A run that fails leaves its table behind; the next stats_init
// of the thread starts anew.

#include "mining/statistics.h"

#include <algorithm>
#include <climits>

#include "base/error.h"
#include "base/ksstack.h"
#include "base/thread_state.h"
#include "base/xmalloc.h"

namespace kestro {

static constexpr int first_sizes = 128; // sizes 0 to 127 at the start

namespace {

struct statistics_state {
  ksstack_ptr counters[2]; // of int, by kind
};

} // namespace

static thread_local thread_state<statistics_state> state;

static ksstack *counters(int kind) {
  assert(state->counters[kind]);
  return state->counters[kind].get();
}

static void extend(ksstack *s, int sizes) {
  const int zero = 0;
  while (s->count < sizes)
    ksstack_push(&zero, s);
}

void stats_init() {
  for (ksstack_ptr &s : state->counters) {
    s.reset(ksstack_new(first_sizes, static_cast<int>(sizeof(int))));
    extend(s.get(), first_sizes);
  }
}

void stats_free() {
  for (ksstack_ptr &s : state->counters)
    s.reset();
}

void stats_set(int kind, int size, int value) {
  ksstack *s = counters(kind);
  if (size < 0)
    return;
  if (size == INT_MAX)
    die_out_of_memory();
  extend(s, size + 1);
  ksstack_array<int>(s)[size] = value;
}

void stats_increment(int kind, int size) {
  stats_set(kind, size, stats_get(kind, size) + 1);
}

int stats_get(int kind, int size) {
  const ksstack *s = counters(kind);
  return size >= 0 && size < s->count ? ksstack_array<int>(s)[size] : 0;
}

void stats_reset() {
  for (int kind : {stats_candidates, stats_frequent}) {
    int *values = ksstack_array<int>(counters(kind));
    std::fill(values, values + counters(kind)->count, 0);
  }
}

long long stats_total(int kind, int from, int to) {
  const int last = std::min(to, stats_largest(kind));
  long long total = 0;
  for (int size = std::max(from, 0); size <= last; size++)
    total += stats_get(kind, size);
  return total;
}

int stats_largest(int kind) {
  int size = counters(kind)->count - 1;
  while (size > 0 && stats_get(kind, size) == 0)
    size--;
  return size;
}

} // namespace kestro
