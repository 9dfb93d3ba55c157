// Independent pieces of work on several threads.
#pragma once

#include <algorithm>
#include <atomic>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <type_traits>

#include "base/xmalloc.h"

namespace kestro {

// How many workers count pieces of work are worth, of jobs at most: each has
// memory of its own, so no more than there are pieces, and 1024 at most.
inline int worker_count(int jobs, int count) {
  static constexpr int most = 1024;
  return std::clamp(std::min(jobs, count), 1, most);
}

// How many pieces in a row a worker takes at once: neighbours share memory that
// two threads at a time would pass to and fro.  Few enough of them that all
// workers end together.
inline int pieces_at_once(int workers, int count) {
  static constexpr int most = 32;
  return workers == 1 ? 1 : std::clamp(count / workers / 64, 1, most);
}

// Receives how far the pieces of work are.
class work_watcher {
public:
  virtual ~work_watcher() = default;
  // taken of count pieces belong to a worker; the last few may not be done.
  virtual void advanced(int taken, int count) = 0;
};

// Calls work(worker, i) for every i from 0 to count - 1, or work(worker, i,
// end) where the pieces from i to end - 1 are the worker's own.  Each of
// worker_count(jobs, count) workers has a thread and a number from 0 and takes
// some i after others, ascending; worker 0 is the caller's own thread, so with
// one worker nothing is started and the order is ascending.  Where the system
// starts fewer threads than that, the workers that there are do all the work.
// When none is left each worker calls finish(worker) on its thread, which is
// the place to free what belongs to the thread.  watcher->advanced() is called
// on the caller's thread after each piece that this thread has done.  An
// exception ends the call once all workers have stopped; of several the one of
// the smallest i is thrown on.
template <class Work, class Finish>
void parallel_for(int jobs, int count, Work work, Finish finish,
                  work_watcher *watcher = nullptr) {
  std::atomic<int> next = 0;
  std::atomic<int> end = count; // no piece from here on is begun
  struct failure {
    int at = 0;
    std::exception_ptr what;
  };
  const int workers = worker_count(jobs, count);
  const int at_once = pieces_at_once(workers, count);
  xvector<failure> failures(static_cast<size_t>(workers));
  const auto attempt = [&](int worker, int i, auto step) {
    try {
      step();
    } catch (...) {
      failure *first = &failures[static_cast<size_t>(worker)];
      if (!first->what)
        *first = {i, std::current_exception()};
      for (int last = end; i < last && !end.compare_exchange_weak(last, i);) {
      }
    }
  };
  const auto run = [&](int worker) {
    for (int from; (from = next.fetch_add(at_once)) < end;) {
      const int last = std::min(from + at_once, count);
      const int to = workers == 1 ? count : last;
      for (int i = from; i < last && i < end; i++)
        attempt(worker, i, [&] {
          if constexpr (std::is_invocable_v<Work, int, int, int>)
            work(worker, i, to);
          else
            work(worker, i);
          if (watcher && worker == 0)
            watcher->advanced(std::min(next.load(), count), count);
        });
    }
    attempt(worker, count, [&] { finish(worker); });
  };
  {
    xvector<std::jthread> threads;
    threads.reserve(static_cast<size_t>(workers) - 1);
    try {
      for (int worker = 1; worker < workers; worker++)
        threads.emplace_back(run, worker);
    } catch (const std::system_error &) { // no more threads
    } catch (const std::bad_alloc &) {    // no memory for one
    }
    run(0);
  }
  const failure *first = nullptr;
  for (const failure &f : failures)
    if (f.what && (!first || f.at < first->at))
      first = &f;
  if (first)
    std::rethrow_exception(first->what);
}

} // namespace kestro
