// The end of the counters of a run.
#pragma once

#include "mining/statistics.h"

namespace kestro {

// Leaves no table.
void stats_free(statistics *s);

} // namespace kestro
