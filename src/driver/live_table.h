// The table of sizes as it grows during a run.
#pragma once

#include <cstdio>

#include "driver/seams.h"
#include "mining/statistics.h"

namespace kestro {

// Prints a row per reported level on out; none in a run for maximal patterns,
// whose counts are known only after the selection.
class live_table : public progress_listener {
public:
  // stats are those of the run that it is told of.
  live_table(FILE *out, bool silent, const statistics *stats)
      : out_(out), silent_(silent), stats_(stats) {}
  void candidates(int size) override;
  void level(int size) override;

private:
  FILE *out_;
  bool silent_;
  const statistics *stats_;
};

} // namespace kestro
