// How a minimum support is given, and the number of graphs it means.

#include <kestro/minimum_support.h>

#include <charconv>
#include <string>

#include <kestro/error.h>

#include "mining/min_support.h"

namespace kestro {

// In the fewest digits that read back as the same number, in any locale.
static std::string text_of(double number) {
  char text[32];
  const auto [end, status] = std::to_chars(text, text + sizeof text, number);
  return {text, end};
}

// No comparison holds for what is no number.
static void check_share(double amount, double most, const char *range) {
  if (!(amount >= 0 && amount <= most))
    throw error("a minimum support of " + text_of(amount) + " is not from " +
                range);
}

minimum_support minimum_support::count(int graphs) {
  if (graphs < 1)
    throw error("a minimum support of " + std::to_string(graphs) +
                " graphs is less than 1");
  return {unit::count, static_cast<double>(graphs)};
}

minimum_support minimum_support::fraction(double share) {
  check_share(share, 1, "0 to 1");
  return {unit::fraction, share};
}

minimum_support minimum_support::percentage(double per_cent) {
  check_share(per_cent, 100, "0 to 100 per cent");
  return {unit::percentage, per_cent};
}

int minimum_support::graphs(int n) const {
  switch (unit_) {
  case unit::count:
    break;
  case unit::fraction:
    return min_support_of_share(amount_, n);
  case unit::percentage:
    return min_support_of_share(static_cast<long double>(amount_) / 100.0L, n);
  }
  return static_cast<int>(amount_);
}

} // namespace kestro
