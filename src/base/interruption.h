// Ending a long computation from outside: by a request or by a time limit.
#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <stop_token>
#include <utility>

namespace kestro {

// Why a computation ended before it was done.
enum class interruption_cause {
  stop_requested,
  out_of_time,
};

// What such a computation throws; it leaves nothing but memory to be freed.
class interrupted : public std::exception {
public:
  explicit interrupted(interruption_cause cause) noexcept : cause_(cause) {}
  interruption_cause cause() const noexcept { return cause_; }
  const char *what() const noexcept override;

private:
  interruption_cause cause_;
};

// The request and the limit of one run.  All its threads look at the same one,
// which outlives the run.
class interruption {
public:
  using clock = std::chrono::steady_clock;

  interruption() = default; // never ends anything
  explicit interruption(std::stop_token token,
                        std::optional<clock::time_point> deadline = {})
      : token_(std::move(token)), deadline_(deadline) {}

  // Whether the computation has to end: a stop was requested, or the deadline
  // has come.
  bool requested() const noexcept;
  // Throws interrupted if so; a request goes before the deadline.
  void check() const;

private:
  bool out_of_time() const noexcept {
    return deadline_ && clock::now() >= *deadline_;
  }

  std::stop_token token_;
  std::optional<clock::time_point> deadline_;
};

// The same for one that may be null, which never ends anything.
inline void check_interruption(const interruption *stop) {
  if (stop)
    stop->check();
}

// How a loop looks at an interruption: seldom enough to cost nothing.  Each
// thread has its own.
class interruption_poll {
public:
  // Looks at stop, which is borrowed and may be null, each time the steps have
  // cost interval in all.  The loop chooses what costs 1, and an interval that
  // takes about a millisecond at most.
  explicit interruption_poll(const interruption *stop = nullptr,
                             int64_t interval = 1024)
      : left_(interval - 1), interval_(interval), stop_(stop) {}

  // One more step; throws interrupted.
  void step(int64_t cost = 1) {
    if ((left_ -= cost) < 0)
      look();
  }

  const interruption *source() const { return stop_; }

private:
  void look();

  int64_t left_; // cost until the next look, which is due when it is negative
  int64_t interval_;
  const interruption *stop_;
};

} // namespace kestro
