#include "base/parallel.h"

#include <pthread.h>

#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace kestro {
namespace {

using ints = std::vector<int>;

void keep(int) {}

// How often each index is worked on.
ints calls_per_index(int jobs, int count) {
  std::vector<std::atomic<int>> calls(static_cast<size_t>(count));
  parallel_for(
      jobs, count, [&](int, int i) { calls[static_cast<size_t>(i)]++; }, keep);
  return ints(calls.begin(), calls.end());
}

// Waits until as many threads as that have come by.
class meeting {
public:
  explicit meeting(int expected) : missing_(expected) {}
  void come() {
    missing_--;
    while (missing_ > 0)
      std::this_thread::yield();
  }

private:
  std::atomic<int> missing_;
};

// While it lives no thread starts: there is no room for a stack of that size.
class no_more_threads {
public:
  no_more_threads() {
    pthread_getattr_default_np(&before_);
    pthread_attr_t attributes = before_;
    pthread_attr_setstacksize(&attributes, size_t{1} << 62);
    pthread_setattr_default_np(&attributes);
  }
  ~no_more_threads() { pthread_setattr_default_np(&before_); }
  no_more_threads(const no_more_threads &) = delete;
  no_more_threads &operator=(const no_more_threads &) = delete;

private:
  pthread_attr_t before_;
};

} // namespace

TEST(ParallelFor, TakesEveryIndexOnce) {
  for (const int jobs : {1, 2, 3, 7})
    for (const int count : {0, 1, 2, 6, 7, 8, 1000})
      EXPECT_EQ(calls_per_index(jobs, count),
                ints(static_cast<size_t>(count), 1))
          << jobs << " jobs";
}

TEST(ParallelFor, OneWorkerGoesInOrderOnTheCallersThread) {
  for (const int jobs : {1, 0, -3}) {
    ints order;
    parallel_for(
        jobs, 5,
        [&, caller = std::this_thread::get_id()](int worker, int i) {
          EXPECT_EQ(worker, 0);
          EXPECT_EQ(std::this_thread::get_id(), caller);
          order.push_back(i);
        },
        [&](int worker) { order.push_back(100 + worker); });
    EXPECT_EQ(order, (ints{0, 1, 2, 3, 4, 100}));
  }
}

TEST(ParallelFor, WorkersAreThreadsOfTheirOwn) {
  // None goes on before all three are there, so each takes one index.
  meeting all(3);
  std::thread::id threads[3];
  parallel_for(
      3, 3,
      [&](int worker, int) {
        threads[worker] = std::this_thread::get_id();
        all.come();
      },
      keep);
  EXPECT_EQ(threads[0], std::this_thread::get_id());
  EXPECT_EQ(std::set<std::thread::id>(threads, threads + 3).size(), 3u);
}

TEST(ParallelFor, NoMoreWorkersThanIndices) {
  meeting all(2);
  parallel_for(
      7, 2,
      [&](int worker, int) {
        EXPECT_LT(worker, 2);
        all.come();
      },
      keep);
}

TEST(ParallelFor, WithoutThreadsTheCallerDoesAllTheWork) {
  const no_more_threads scope;
  ASSERT_THROW(std::jthread([] {}), std::system_error);
  ints order;
  parallel_for(
      3, 5,
      [&](int worker, int i) {
        EXPECT_EQ(worker, 0);
        order.push_back(i);
      },
      [&](int worker) { order.push_back(100 + worker); });
  EXPECT_EQ(order, (ints{0, 1, 2, 3, 4, 100}));
}

TEST(ParallelFor, EveryWorkerFinishesOnceOnItsThread) {
  for (const int jobs : {1, 2, 3, 7}) {
    std::mutex guard;
    std::multiset<int> workers;
    const auto caller = std::this_thread::get_id();
    parallel_for(
        jobs, 100, [](int, int) {},
        [&](int worker) {
          const std::lock_guard lock(guard);
          workers.insert(worker);
          EXPECT_EQ(worker == 0, std::this_thread::get_id() == caller);
        });
    EXPECT_EQ(workers.size(), static_cast<size_t>(jobs));
    for (int worker = 0; worker < jobs; worker++)
      EXPECT_EQ(workers.count(worker), 1u);
  }
}

TEST(ParallelFor, FailureToFinishComesOutUnlessWorkFailed) {
  const auto fail = [](int) { throw std::runtime_error("finish"); };
  for (const int jobs : {1, 3}) {
    EXPECT_THROW(parallel_for(
                     jobs, 5, [](int, int) {}, fail),
                 std::runtime_error);
    EXPECT_THROW(
        parallel_for(
            jobs, 5, [](int, int) { throw std::logic_error("work"); }, fail),
        std::logic_error);
  }
}

TEST(ParallelFor, WorkersThatFailFinishToo) {
  std::atomic<int> finished = 0;
  meeting all(3);
  EXPECT_THROW(parallel_for(
                   3, 3,
                   [&](int, int) {
                     all.come();
                     throw std::runtime_error("all");
                   },
                   [&](int) { finished++; }),
               std::runtime_error);
  EXPECT_EQ(finished, 3);
}

// What comes out when the indices in failing fail, all at once where there are
// as many workers as that.
static std::string failure_of(int jobs, const std::set<int> &failing) {
  meeting all(std::min(jobs, static_cast<int>(failing.size())));
  try {
    parallel_for(
        jobs, 20,
        [&](int, int i) {
          if (failing.count(i) == 0)
            return;
          all.come();
          throw std::runtime_error(std::to_string(i));
        },
        keep);
  } catch (const std::runtime_error &e) {
    return e.what();
  }
  return "none";
}

TEST(ParallelFor, SmallestIndexThatFailedComesOut) {
  for (int round = 0; round < 50; round++) {
    EXPECT_EQ(failure_of(2, {3, 4}), "3");
    EXPECT_EQ(failure_of(3, {5, 6, 7}), "5");
    EXPECT_EQ(failure_of(7, {9, 11, 12, 13, 14, 15, 19}), "9");
  }
}

TEST(ParallelFor, PiecesUpToTheEndAreTheWorkersOwn) {
  constexpr int count = 5000;
  for (const int jobs : {1, 2, 3}) {
    std::vector<std::atomic<int>> worker_of(count);
    std::vector<int> end_of(count);
    parallel_for(
        jobs, count,
        [&](int worker, int i, int end) {
          worker_of[static_cast<size_t>(i)] = worker;
          end_of[static_cast<size_t>(i)] = end;
        },
        keep);
    for (int i = 0; i < count; i++) {
      const int end = end_of[static_cast<size_t>(i)];
      ASSERT_GT(end, i);
      ASSERT_LE(end, count);
      for (int j = i; j < end; j++)
        ASSERT_EQ(worker_of[static_cast<size_t>(j)],
                  worker_of[static_cast<size_t>(i)]);
      EXPECT_TRUE(jobs > 1 || end == count);
    }
  }
}

// Of many pieces, some of which fail, none below the first failure is left out.
TEST(ParallelFor, SmallestOfManyIndicesThatFailComesOut) {
  for (const int jobs : {1, 2, 3}) {
    std::vector<std::atomic<int>> calls(5000);
    try {
      parallel_for(
          jobs, 5000,
          [&](int, int i) {
            calls[static_cast<size_t>(i)]++;
            if (i >= 1234)
              throw std::runtime_error(std::to_string(i));
          },
          keep);
      FAIL();
    } catch (const std::runtime_error &e) {
      EXPECT_EQ(std::string(e.what()), "1234");
    }
    for (size_t i = 0; i <= 1234; i++)
      EXPECT_EQ(calls[i], 1) << i;
  }
}

TEST(PiecesAtOnce, AreFewWhereThereIsLittleWork) {
  EXPECT_EQ(pieces_at_once(1, 1000000), 1);
  EXPECT_EQ(pieces_at_once(2, 20), 1);
  EXPECT_EQ(pieces_at_once(2, 1280), 10);
  EXPECT_EQ(pieces_at_once(2, 1000000), 32);
}

TEST(WorkerCount, IsBoundedByTheWork) {
  EXPECT_EQ(worker_count(1000000, 3), 3);
  EXPECT_EQ(worker_count(2, 3), 2);
  EXPECT_EQ(worker_count(7, 7), 7);
}

TEST(WorkerCount, IsAtLeastOne) {
  EXPECT_EQ(worker_count(0, 3), 1);
  EXPECT_EQ(worker_count(-5, 3), 1);
  EXPECT_EQ(worker_count(4, 0), 1);
}

TEST(WorkerCount, IsBoundedByWhatMachinesCanRun) {
  EXPECT_EQ(worker_count(1000000, 1000000), 1024);
}

TEST(ParallelFor, OneFailureComesOutWhereverItIs) {
  for (const int jobs : {1, 2, 3, 7})
    for (const int at : {0, 1, 10, 19})
      EXPECT_EQ(failure_of(jobs, {at}), std::to_string(at));
}

TEST(ParallelFor, OneWorkerStopsAtItsFirstFailure) {
  ints order;
  EXPECT_THROW(parallel_for(
                   1, 9,
                   [&](int, int i) {
                     order.push_back(i);
                     if (i >= 2)
                       throw std::runtime_error("2");
                   },
                   keep),
               std::runtime_error);
  EXPECT_EQ(order, (ints{0, 1, 2}));
}

// An index taken before the failure is finished, later ones are not begun.
TEST(ParallelFor, NothingIsRunningWhenAFailureComesOut) {
  for (int round = 0; round < 20; round++) {
    std::atomic<int> running = 0;
    EXPECT_THROW(parallel_for(
                     3, 1000,
                     [&](int, int i) {
                       running++;
                       std::this_thread::yield();
                       running--;
                       if (i == 7)
                         throw std::runtime_error("7");
                     },
                     keep),
                 std::runtime_error);
    EXPECT_EQ(running, 0);
  }
}

} // namespace kestro
