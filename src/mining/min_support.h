// A minimum support as a number of transactions.
#pragma once

namespace kestro {

// A share of n transactions: rounded to the nearest number, halves up, and kept
// within 1 and n (1 when n is 0, or the share is no number).
int min_support_of_share(long double share, int n);

} // namespace kestro
