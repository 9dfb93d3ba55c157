// Per-size counters of a run.
//
// Either kind is an array indexed by size, which grows to the largest size
// counted.

#include "mining/statistics.h"

#include <algorithm>
#include <climits>

namespace kestro {

static constexpr size_t first_sizes = 128; // sizes 0 to 127 at the start

void stats_init(statistics *s) {
  for (xvector<int> &counters : s->counters)
    counters.assign(first_sizes, 0);
}

void stats_set(statistics *s, int kind, int size, int value) {
  xvector<int> &counters = s->counters[kind];
  if (size < 0)
    return;
  if (size == INT_MAX)
    die_out_of_memory();
  const size_t place = static_cast<size_t>(size);
  if (counters.size() <= place)
    counters.resize(place + 1, 0);
  counters[place] = value;
}

void stats_increment(statistics *s, int kind, int size) {
  stats_set(s, kind, size, stats_get(s, kind, size) + 1);
}

int stats_get(const statistics *s, int kind, int size) {
  const xvector<int> &counters = s->counters[kind];
  const bool is_counted =
      size >= 0 && static_cast<size_t>(size) < counters.size();
  return is_counted ? counters[static_cast<size_t>(size)] : 0;
}

void stats_reset(statistics *s) {
  for (xvector<int> &counters : s->counters)
    std::fill(counters.begin(), counters.end(), 0);
}

long long stats_total(const statistics *s, int kind, int from, int to) {
  const int last = std::min(to, stats_largest(s, kind));
  long long total = 0;
  for (int size = std::max(from, 0); size <= last; size++)
    total += stats_get(s, kind, size);
  return total;
}

int stats_largest(const statistics *s, int kind) {
  int size = std::max(static_cast<int>(s->counters[kind].size()) - 1, 0);
  while (size > 0 && stats_get(s, kind, size) == 0)
    size--;
  return size;
}

} // namespace kestro
