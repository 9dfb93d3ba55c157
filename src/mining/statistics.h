// How many candidates and frequent patterns each size had.
#pragma once

namespace kestro {

constexpr int stats_candidates = 0; // kinds of counters
constexpr int stats_frequent = 1;

// The table belongs to the calling thread: one run at a time.
// Creates it with sizes 0 to 127 at zero; frees it.
void stats_init();
void stats_free();

// Sizes beyond the table are added by set and increment, and read as 0;
// negative ones are not counted.
void stats_set(int kind, int size, int value);
void stats_increment(int kind, int size);
int stats_get(int kind, int size);
// Zeroes all counters of both kinds.
void stats_reset();

// Sum of the counters of the sizes from..to.
long long stats_total(int kind, int from, int to);
// The largest size whose counter is not zero; 0 if none.
int stats_largest(int kind);

} // namespace kestro
