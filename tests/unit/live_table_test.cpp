#include "driver/live_table.h"

#include <string>

#include <gtest/gtest.h>

#include "support/streams.h"

namespace kestro {
namespace {

progress counting(int size, long long candidates) {
  return {size, progress::step::counting, 0, candidates - 1, candidates};
}

progress complete(int size, long long patterns) {
  return {size, progress::step::complete, patterns, patterns, 120};
}

class LiveTable : public testing::Test {
protected:
  template <class Callable> std::string shown(Callable tell) const {
    return written_text([&](FILE *out) {
      live_table table(&o, out);
      tell(table);
    });
  }

  options o;
};

} // namespace

TEST_F(LiveTable, FirstRowBringsTheHeading) {
  EXPECT_EQ(shown([](live_table &t) { t.show(complete(1, 4)); }),
            "  Size Candidates Frequent Patterns \n"
            "  1               4                 \n");
}

TEST_F(LiveTable, SecondRowHasNoHeading) {
  EXPECT_EQ(shown([](live_table &t) { t.show(complete(2, 12)); }),
            "  2               12                \n");
}

TEST_F(LiveTable, LaterRowsComeInTwoHalves) {
  EXPECT_EQ(shown([](live_table &t) { t.show(counting(3, 120)); }),
            "  3    120        ");
  EXPECT_EQ(shown([](live_table &t) { t.show(complete(3, 7)); }),
            "7                 \n");
}

TEST_F(LiveTable, FrequentHalfOfAnEmptyLevelShowsZero) {
  EXPECT_EQ(shown([](live_table &t) {
              t.show(counting(3, 120));
              t.show(complete(3, 0));
            }),
            "  3    120        0                 \n");
}

TEST_F(LiveTable, StepsWithinASizeAreNotShown) {
  EXPECT_EQ(shown([](live_table &t) {
              t.show({3, progress::step::joining, 1, 2, 0});
              t.show({3, progress::step::bounding, 1, 130, 130});
              t.show(counting(3, 120));
              t.show({3, progress::step::counting, 1, 119, 120});
              t.show(complete(3, 7));
            }),
            "  3    120        7                 \n");
}

TEST_F(LiveTable, SizesThatAreNotReportedAreNotShown) {
  o.minsize = 4;
  EXPECT_EQ(shown([](live_table &t) {
              t.show(complete(1, 4));
              t.show(counting(3, 120));
              t.show(complete(3, 7));
              t.show(counting(4, 5));
            }),
            "  4    5          ");
}

TEST_F(LiveTable, HalvesAreFlushedAtOnce) {
  char *text = nullptr;
  size_t length = 0;
  FILE *out = open_memstream(&text, &length);
  live_table table(&o, out);
  table.show(counting(3, 120));
  EXPECT_EQ(std::string(text, length), "  3    120        ");
  fclose(out);
  free(text);
}

TEST_F(LiveTable, RunForMaximalPatternsShowsNothing) {
  o.maximal = 1;
  EXPECT_EQ(shown([](live_table &t) {
              t.show(complete(1, 4));
              t.show(counting(3, 120));
              t.show(complete(3, 7));
            }),
            "");
}

} // namespace kestro
