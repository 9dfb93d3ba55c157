// The table of sizes as it grows during a run.
#pragma once

#include <cstdio>

#include "driver/seams.h"

namespace kestro {

// Prints a row per reported level on out; none in a run for maximal patterns,
// whose counts are known only after the selection.
class live_table : public progress_listener {
public:
  live_table(FILE *out, bool silent) : out_(out), silent_(silent) {}
  void candidates(int size) override;
  void level(int size) override;

private:
  FILE *out_;
  bool silent_;
};

} // namespace kestro
