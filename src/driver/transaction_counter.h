// Counting candidates against the transactions in memory.
#pragma once

#include "driver/seams.h"
#include "mining/support.h"

namespace kestro {

class transaction_counter : public candidate_counter {
public:
  // Borrows the graph list of transactions; minsup is at least 1.
  transaction_counter(const ksstack *transactions, int minsup, int jobs)
      : transactions_(transactions), minsup_(minsup), jobs_(jobs),
        counter_(transactions, jobs) {}
  void filter(sg_set *cand, const sg_set *prev) override;
  sg_set *count(sg_set *cand, sg_set *prev) override;

private:
  const ksstack *transactions_;
  int minsup_;
  int jobs_;
  support_counter counter_;
};

} // namespace kestro
