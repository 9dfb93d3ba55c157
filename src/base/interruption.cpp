// Requests to stop and time limits.
//
// A look at a request is two loads, one at the deadline a call of the clock,
// some tens of nanoseconds.  Loops count down to their next look, so that
// neither shows in what a run costs.

#include "base/interruption.h"

namespace kestro {

const char *interrupted::what() const noexcept {
  return cause_ == interruption_cause::stop_requested ? "stop requested"
                                                      : "out of time";
}

bool interruption::requested() const noexcept {
  return token_.stop_requested() || out_of_time();
}

void interruption::check() const {
  if (token_.stop_requested())
    throw interrupted(interruption_cause::stop_requested);
  if (out_of_time())
    throw interrupted(interruption_cause::out_of_time);
}

void interruption_poll::look() {
  left_ = interval_ - 1;
  check_interruption(stop_);
}

} // namespace kestro
