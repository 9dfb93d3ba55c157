#include "mining/seen_extensions.h"

#include <gtest/gtest.h>

#include "base/parallel.h"
#include "support/graphs.h"
#include "support/records.h"

namespace kestro {

// A level in which pattern i has core i / 10 as its only kept parent.
static sg_set_ptr level_of(int patterns) {
  sg_set_ptr level(sg_set_create());
  for (int i = 0; i < patterns; i++) {
    sg_ptr sg = record_of(path_graph(2));
    add_parent(sg.get(), i / 10);
    sg->kept[0] = 0;
    sg_set_push(level.get(), std::move(sg));
  }
  return level;
}

static extension at(int pattern, int from) {
  return pendant_extension(pattern, from, 0, 0);
}

TEST(SeenExtensions, AreAddedOnce) {
  const sg_set_ptr level = level_of(3);
  for (const int workers : {1, 3}) {
    seen_extensions seen(level.get(), workers);
    EXPECT_FALSE(seen.contains(at(2, 1)));
    seen.expect(at(2, 1));
    EXPECT_TRUE(seen.insert(at(2, 1)));
    EXPECT_FALSE(seen.insert(at(2, 1)));
    EXPECT_TRUE(seen.contains(at(2, 1)));
    EXPECT_FALSE(seen.contains(at(1, 1)));
    EXPECT_FALSE(seen.contains(at(2, 0)));
  }
}

TEST(SeenExtensions, LastKeptParentSaysHowLongAPatternIsExtended) {
  const sg_set_ptr level = level_of(25);
  const seen_extensions seen(level.get());
  EXPECT_TRUE(seen.is_extended_from(0, 9));
  EXPECT_FALSE(seen.is_extended_from(1, 9));
  EXPECT_TRUE(seen.is_extended_from(1, 10));
  EXPECT_TRUE(seen.is_extended_from(2, 24));
  EXPECT_FALSE(seen.is_extended_from(3, 24));
}

TEST(SeenExtensions, SlowestWorkerSaysWhichCoreIsTheEarliest) {
  const sg_set_ptr level = level_of(1);
  seen_extensions seen(level.get(), 3);
  EXPECT_EQ(seen.earliest_core(), 0);
  seen.begin_core(0, 5);
  seen.begin_core(2, 7);
  EXPECT_EQ(seen.earliest_core(), 0);
  seen.begin_core(1, 6);
  EXPECT_EQ(seen.earliest_core(), 5);
  seen.begin_core(0, 8);
  EXPECT_EQ(seen.earliest_core(), 6);
}

// Joined in order, patterns keep their marks as long as a core asks for them.
TEST(SeenExtensions, NoneIsForgottenThatIsAskedForAgain) {
  constexpr int patterns = 2000;
  const sg_set_ptr level = level_of(patterns);
  for (const int workers : {1, 2}) {
    seen_extensions seen(level.get(), workers);
    for (int core = 0; core < patterns / 10; core++) {
      for (int w = 0; w < workers; w++)
        seen.begin_core(w, core);
      for (int pattern = 10 * core; pattern < patterns; pattern += 7)
        ASSERT_TRUE(seen.insert(at(pattern, core)));
      // Seven cores on, the same patterns come again.
      for (int pattern = 10 * core; pattern < patterns; pattern += 7)
        for (int from = core % 7; from <= core; from += 7)
          ASSERT_TRUE(seen.contains(at(pattern, from))) << core;
    }
  }
}

// Each is added by one of the threads that want to.
TEST(SeenExtensions, ThreadsShareThem) {
  constexpr int patterns = 500;
  constexpr int jobs = 4;
  const sg_set_ptr level = level_of(patterns);
  seen_extensions seen(level.get(), jobs);
  std::atomic<int> added = 0;
  parallel_for(
      jobs, 4 * patterns,
      [&](int, int i) {
        for (int from = 0; from < 20; from++)
          added += seen.insert(at(i % patterns, from));
      },
      [](int) {});
  EXPECT_EQ(added, 20 * patterns);
}

} // namespace kestro
