#include "driver/live_table.h"

#include <string>

#include <gtest/gtest.h>

#include "mining/statistics.h"
#include "support/streams.h"

namespace kestro {
namespace {

class LiveTable : public testing::Test {
protected:
  LiveTable() {
    stats_init(&stats);
    stats_set(&stats, stats_frequent, 1, 4);
    stats_set(&stats, stats_frequent, 2, 12);
    stats_set(&stats, stats_candidates, 3, 120);
    stats_set(&stats, stats_frequent, 3, 7);
  }

  template <class Callable> std::string shown(Callable tell) const {
    return written_text([&](FILE *out) {
      live_table table(out, false, &stats);
      tell(table);
    });
  }

  statistics stats;
};

} // namespace

TEST_F(LiveTable, FirstRowBringsTheHeading) {
  EXPECT_EQ(shown([](live_table &t) { t.level(1); }),
            "  Size Candidates Frequent Patterns \n"
            "  1               4                 \n");
}

TEST_F(LiveTable, SecondRowHasNoHeading) {
  EXPECT_EQ(shown([](live_table &t) { t.level(2); }),
            "  2               12                \n");
}

TEST_F(LiveTable, LaterRowsComeInTwoHalves) {
  EXPECT_EQ(shown([](live_table &t) { t.candidates(3); }),
            "  3    120        ");
  EXPECT_EQ(shown([](live_table &t) { t.level(3); }), "7                 \n");
}

TEST_F(LiveTable, FrequentHalfOfAnEmptyLevelShowsZero) {
  stats_set(&stats, stats_frequent, 3, 0);
  EXPECT_EQ(shown([](live_table &t) {
              t.candidates(3);
              t.level(3);
            }),
            "  3    120        0                 \n");
}

TEST_F(LiveTable, HalvesAreFlushedAtOnce) {
  char *text = nullptr;
  size_t length = 0;
  FILE *out = open_memstream(&text, &length);
  live_table table(out, false, &stats);
  table.candidates(3);
  EXPECT_EQ(std::string(text, length), "  3    120        ");
  fclose(out);
  free(text);
}

TEST_F(LiveTable, SilentTableShowsNothing) {
  EXPECT_EQ(written_text([&](FILE *out) {
              live_table table(out, true, &stats);
              table.level(1);
              table.level(2);
              table.candidates(3);
              table.level(3);
            }),
            "");
}

} // namespace kestro
