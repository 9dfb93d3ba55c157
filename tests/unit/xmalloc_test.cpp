#include "base/xmalloc.h"

#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

#include "support/fatal.h"

namespace kestro {

static constexpr size_t absurd = SIZE_MAX / 2; // bytes that no machine has
static const char exhausted[] = "xmalloc.c:N: not enough memory\n";

TEST(Xmalloc, GivesWritableMemory) {
  const xptr<char> block(static_cast<char *>(xmalloc(100)));
  memset(block.get(), 'a', 100);
  EXPECT_EQ(block.get()[99], 'a');
}

TEST(Xmalloc, NotEnoughMemoryIsFatal) {
  EXPECT_EQ(fatal_text([] { xfree(xmalloc(absurd)); }), exhausted);
}

TEST(Xmalloc, CallocFillsWithZeros) {
  const xptr<int> block(static_cast<int *>(xcalloc(50, sizeof(int))));
  for (int i = 0; i < 50; i++)
    EXPECT_EQ(block.get()[i], 0) << i;
}

TEST(Xmalloc, CallocNotEnoughMemoryIsFatal) {
  EXPECT_EQ(fatal_text([] { xfree(xcalloc(absurd, 1)); }), exhausted);
}

TEST(Xmalloc, CallocOfAnOverflowingProductIsFatal) {
  EXPECT_EQ(fatal_text([] { xfree(xcalloc(absurd, 4)); }), exhausted);
}

TEST(Xmalloc, ReallocOfNullAllocates) {
  const xptr<char> block(static_cast<char *>(xrealloc(nullptr, 10)));
  ASSERT_NE(block, nullptr);
  block.get()[9] = 'b';
  EXPECT_EQ(block.get()[9], 'b');
}

TEST(Xmalloc, ReallocKeepsTheContents) {
  char *block = static_cast<char *>(xmalloc(4));
  memcpy(block, "abc", 4);
  block = static_cast<char *>(xrealloc(block, 100000));
  EXPECT_STREQ(block, "abc");
  xfree(block);
}

// That the block is freed is for the leak checker to see.
TEST(Xmalloc, ReallocToSizeZeroFreesAndReturnsNull) {
  EXPECT_EQ(xrealloc(xmalloc(10), 0), nullptr);
}

TEST(Xmalloc, ReallocOfNullToSizeZeroIsNull) {
  EXPECT_EQ(xrealloc(nullptr, 0), nullptr);
}

TEST(Xmalloc, FailedReallocIsFatalAndLeavesTheBlock) {
  const xptr<char> block(static_cast<char *>(xmalloc(4)));
  memcpy(block.get(), "abc", 4);
  EXPECT_EQ(fatal_text([&] { xfree(xrealloc(block.get(), absurd)); }),
            exhausted);
  EXPECT_STREQ(block.get(), "abc");
}

TEST(Xmalloc, FreeOfNullDoesNothing) { EXPECT_NO_THROW(xfree(nullptr)); }

TEST(Xmalloc, DieOutOfMemoryHasTheSameText) {
  EXPECT_EQ(fatal_text([] { die_out_of_memory(); }), exhausted);
}

TEST(Xmalloc, VectorTakesItsMemoryHere) {
  xvector<int> numbers;
  for (int i = 0; i < 1000; i++)
    numbers.push_back(i);
  EXPECT_EQ(numbers.size(), 1000u);
  EXPECT_EQ(numbers[999], 999);
  EXPECT_EQ(fatal_text([] { xvector<char> huge(absurd); }), exhausted);
}

TEST(Xmalloc, AllocatorDiesOfACountWhoseBytesOverflow) {
  xallocator<int> ints;
  EXPECT_EQ(fatal_text([&] { ints.allocate(SIZE_MAX / sizeof(int) + 1); }),
            exhausted);
}

TEST(Xmalloc, AllocatorsAreInterchangeable) {
  EXPECT_TRUE(xallocator<int>() == xallocator<int>(xallocator<char>()));
}

} // namespace kestro
