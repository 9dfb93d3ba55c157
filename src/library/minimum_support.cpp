#include <algorithm>
#include <cmath>
#include <kestro/error.h>
#include <kestro/minimum_support.h>
namespace kestro {
minimum_support minimum_support::count(int graphs) {
  return {unit::count, double(graphs)};
}
minimum_support minimum_support::fraction(double share) {
  return {unit::fraction, share};
}
minimum_support minimum_support::percentage(double p) {
  return {unit::percentage, p};
}
int minimum_support::graphs(int n) const {
  if (unit_ == unit::count)
    return static_cast<int>(amount_);
  const long double all = unit_ == unit::percentage ? 100.0L : 1.0L;
  const long double count =
      truncl(static_cast<long double>(amount_) / all * n + 0.5L);
  const long double capped = count > n ? n : count;
  return capped < 1 ? 1 : static_cast<int>(capped);
}
} // namespace kestro
