// How many candidates and frequent patterns each size had.
#pragma once

#include "base/xmalloc.h"

namespace kestro {

constexpr int stats_candidates = 0; // kinds of counters
constexpr int stats_frequent = 1;

// The counters of one run, which owns them.  Sizes beyond the table are added
// by set and increment, and read as 0; negative ones are not counted.
struct statistics {
  xvector<int> counters[2];      // by kind, then size
  long long order_dependent = 0; // candidates, frequent or not, whose form may
                                 // depend on the order of vertices
};

// Zeroes sizes 0 to 127, the table's first ones.
void stats_init(statistics *s);

void stats_set(statistics *s, int kind, int size, int value);
void stats_increment(statistics *s, int kind, int size);
int stats_get(const statistics *s, int kind, int size);
// Zeroes all counters of both kinds.
void stats_reset(statistics *s);

// Sum of the counters of the sizes from..to.
long long stats_total(const statistics *s, int kind, int from, int to);
// The largest size whose counter is not zero; 0 if none.
int stats_largest(const statistics *s, int kind);

} // namespace kestro
