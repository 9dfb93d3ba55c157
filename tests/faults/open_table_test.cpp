// Memory runs out while a table grows.

#include "base/open_table.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "support/failing_memory.h"

namespace kestro {
namespace {

struct number_slot {
  int number = -1; // of a free slot

  bool in_use() const { return number != -1; }
  uint64_t hash() const { return mixed(0, static_cast<uint32_t>(number)); }
};

using number_table = open_table<number_slot>;

bool insert(int number, number_table *table) {
  return table->insert(
      {number}, [&](const number_slot &s) { return s.number == number; });
}

bool contains(int number, const number_table &table) {
  return table
      .look_up(number_slot{number}.hash(),
               [&](const number_slot &s) { return s.number == number; })
      .in_use();
}

} // namespace

TEST(OpenTableMemory, GrowthThatFailsChangesNothing) {
  constexpr int numbers = 2000; // make it grow six times
  const long before = live_blocks();
  int failed = 0;
  for (long n = 1; n <= 6; n++) {
    number_table table;
    int held = 0;
    refuse_allocation(n, refusal::once);
    try {
      for (; held < numbers; held++)
        insert(held, &table);
    } catch (const fatal_error &) {
      failed++;
    }
    EXPECT_EQ(refuse_no_allocation() < n, held == numbers);
    EXPECT_LT(held, numbers) << n;
    EXPECT_EQ(table.size(), static_cast<size_t>(held));
    for (int i = 0; i < numbers; i++)
      ASSERT_EQ(contains(i, table), i < held) << n << ' ' << i;
    for (int i = held; i < numbers; i++)
      ASSERT_TRUE(insert(i, &table));
    for (int i = 0; i < numbers; i++)
      ASSERT_TRUE(contains(i, table)) << n << ' ' << i;
  }
  EXPECT_EQ(failed, 6);
  EXPECT_EQ(live_blocks(), before);
}

} // namespace kestro
