// From a share of the transactions to a number of them.
//
// Extended precision decides which shares fall just short of a number, and
// recorded runs depend on it; a share in per cent is divided in it, too.

#include "mining/min_support.h"

#include <cmath>

namespace kestro {

int min_support_of_share(long double share, int n) {
  const long double count = truncl(share * n + 0.5L);
  if (std::isnan(count))
    return 1;
  const long double capped = count > n ? n : count;
  return capped < 1 ? 1 : static_cast<int>(capped);
}

} // namespace kestro
