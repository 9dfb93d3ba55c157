#include "mining/seen_extensions.h"

#include <climits>
#include <set>
#include <tuple>

#include <gtest/gtest.h>

#include "base/parallel.h"
#include "support/graphs.h"
#include "support/records.h"

namespace kestro {

// A level in which pattern i has core i / 10 as its only kept parent.
struct narrow_level {
  explicit narrow_level(int patterns)
      : children(sg_set_create()), cores(sg_set_create()) {
    for (int i = 0; i < patterns; i++) {
      sg_ptr sg = record_of(path_graph(3));
      add_parent(sg.get(), i / 10);
      sg->kept[0] = 0;
      sg_set_push(children.get(), std::move(sg));
      if (i % 10 == 0)
        sg_set_push(cores.get(), record_of(path_graph(2)));
    }
  }
  seen_extensions seen(int workers = 1) const {
    const core_links links(cores.get(), children.get());
    return {children.get(), &links, workers};
  }

  sg_set_ptr children;
  sg_set_ptr cores;
};

static extension at(int pattern, int from) {
  return pendant_extension(pattern, from, 0, 0);
}

TEST(SeenExtensions, AreAddedOnce) {
  const narrow_level level(3);
  for (const int workers : {1, 3}) {
    seen_extensions seen = level.seen(workers);
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
  const narrow_level level(25);
  const seen_extensions seen = level.seen();
  EXPECT_TRUE(seen.is_extended_from(0, 9));
  EXPECT_FALSE(seen.is_extended_from(1, 9));
  EXPECT_TRUE(seen.is_extended_from(1, 10));
  EXPECT_TRUE(seen.is_extended_from(2, 24));
  EXPECT_FALSE(seen.is_extended_from(3, 24));
}

TEST(SeenExtensions, SlowestWorkerSaysWhichCoreIsTheEarliest) {
  const narrow_level level(1);
  seen_extensions seen = level.seen(3);
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
  const narrow_level level(patterns);
  for (const int workers : {1, 2}) {
    seen_extensions seen = level.seen(workers);
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

// Some extensions have a word, and the large labels have none.
TEST(SeenExtensions, EqualAStandardSet) {
  constexpr int patterns = 1000;
  const narrow_level level(patterns);
  const auto order = [](const extension &a, const extension &b) {
    return std::tie(a.pattern, a.from, a.to, a.elabel, a.vlabel) <
           std::tie(b.pattern, b.from, b.to, b.elabel, b.vlabel);
  };
  for (const int workers : {1, 3}) {
    seen_extensions seen = level.seen(workers);
    std::set<extension, decltype(order)> expected(order);
    test_rng rng(7);
    const auto any = [&](int n) {
      return static_cast<int>(rng() % unsigned(n));
    };
    const auto label = [&] { return any(3) ? any(3) : INT_MAX - any(3); };
    for (int i = 0; i < 40000; i++) {
      const int core = i / (40000 / (patterns / 10));
      for (int w = 0; w < workers; w++)
        seen.begin_core(w, core);
      const int pattern = 10 * core + any(patterns - 10 * core);
      const extension x =
          any(3) ? pendant_extension(pattern, any(3), label(), label())
                 : closing_extension(pattern, any(2), 2, label());
      ASSERT_EQ(seen.contains(x), expected.count(x) == 1);
      const bool added = any(2) ? seen.insert(x) : seen.insert(seen.expect(x));
      ASSERT_EQ(added, expected.insert(x).second);
    }
    for (const extension &x : expected)
      ASSERT_TRUE(seen.contains(x) ||
                  !seen.is_extended_from(seen.earliest_core(), x.pattern));
  }
}

// Each is added by one of the threads that want to.
TEST(SeenExtensions, ThreadsShareThem) {
  constexpr int patterns = 500;
  constexpr int jobs = 4;
  const narrow_level level(patterns);
  seen_extensions seen = level.seen(jobs);
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
