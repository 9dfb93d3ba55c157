// Ending counters whose owner lives on.

#include "reference/mining/statistics.h"

namespace kestro {

void stats_free(statistics *s) {
  for (xvector<int> &counters : s->counters)
    counters = xvector<int>();
}

} // namespace kestro
