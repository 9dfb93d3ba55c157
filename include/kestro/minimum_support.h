// In how many graphs a pattern must occur.
#pragma once

#include <kestro/export.h>

namespace kestro {

// A number of graphs, or a share of those of the database.
class KESTRO_API minimum_support {
public:
  // At least this many graphs, 1 or more.
  static minimum_support count(int graphs);
  // A share of the graphs, from 0 to 1, and the same in per cent, from 0 to
  // 100: rounded to the nearest number of graphs, halves up, and at least 1.
  static minimum_support fraction(double share);
  static minimum_support percentage(double per_cent);
  // All of them throw error for a number out of range or no number.

  // The number of graphs of a database of n; at least 1, and at most n where
  // there are any, unless it was given as a count.
  int graphs(int n) const;

private:
  enum class unit { count, fraction, percentage };
  minimum_support(unit u, double amount) : unit_(u), amount_(amount) {}
  unit unit_;
  double amount_;
};

} // namespace kestro
