// The table of sizes as it grows during a run.
#pragma once

#include <cstdio>

#include <kestro/progress.h>

#include "driver/options.h"
#include "mining/statistics.h"

namespace kestro {

// Prints a row per reported size on out; none in a run for maximal patterns,
// whose counts are known only after the selection.
class live_table {
public:
  live_table(const options *o, FILE *out) : o_(o), out_(out) {
    stats_init(&seen_);
  }
  // Prints what is new, if anything.
  void show(const progress &now);

private:
  void show_candidates(const progress &now);
  void show_patterns(const progress &now);

  const options *o_;
  FILE *out_;
  statistics seen_;
};

} // namespace kestro
