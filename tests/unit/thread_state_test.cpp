#include "base/thread_state.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/fatal.h"

namespace kestro {
namespace {

std::atomic<int> ended = 0;

struct counter {
  int value = 7;
  ~counter() { ended++; }
};

// Its end needs the state that is ending.
struct using_itself {
  int value = 3;
  ~using_itself();
};

struct refused {
  int value = 0;
};

} // namespace

static thread_local thread_state<counter> counters;
static thread_local thread_state<using_itself> users;
static thread_local thread_state<refused> refusals;

using_itself::~using_itself() {
  if (users->value == 3)
    ended += 100;
}

TEST(ThreadState, EachThreadHasItsOwn) {
  counters->value = 1;
  std::jthread([] {
    EXPECT_EQ(counters->value, 7);
    counters->value = 2;
  }).join();
  EXPECT_EQ(counters->value, 1);
}

TEST(ThreadState, EndsWithItsThreadIfItWasUsed) {
  ended = 0;
  std::jthread([] {}).join();
  EXPECT_EQ(ended, 0);
  std::jthread([] { counters->value = 5; }).join();
  EXPECT_EQ(ended, 1);
}

TEST(ThreadState, MayBeUsedByItsEnd) {
  ended = 0;
  std::jthread([] { users->value = 3; }).join();
  EXPECT_EQ(ended, 100);
}

TEST(ThreadState, FirstUseDiesWithoutAKey) {
  std::vector<pthread_key_t> taken;
  for (pthread_key_t key; pthread_key_create(&key, nullptr) == 0;)
    taken.push_back(key);
  EXPECT_EQ(fatal_text([] { refusals->value = 1; }),
            "xmalloc.c:N: not enough memory\n");
  for (const pthread_key_t key : taken)
    pthread_key_delete(key);
  refusals->value = 1;
  EXPECT_EQ(refusals->value, 1);
}

} // namespace kestro
