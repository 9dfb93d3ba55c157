#include "reference/base/ksistack.h"

#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "support/fatal.h"

namespace kestro {

static ksistack_ptr stack_of(const std::vector<int> &values) {
  ksistack_ptr s(ksistack_new(1));
  for (const int value : values)
    ksistack_push(value, s.get());
  return s;
}

static std::vector<int> ints_of(const ksistack_ptr &s) {
  return std::vector<int>(s->data, s->data + s->count);
}

// Compares hundreds only, so that equal values can be told apart.
static int compar_hundreds(const void *a, const void *b) {
  return *static_cast<const int *>(a) / 100 -
         *static_cast<const int *>(b) / 100;
}

// count values that compare equal: 500, 501, ...
static ksistack_ptr five_hundreds(int count) {
  ksistack_ptr s(ksistack_new(1));
  for (int i = 0; i < count; i++)
    ksistack_push(500 + i, s.get());
  return s;
}

TEST(Ksistack, NewStackIsEmpty) {
  const ksistack_ptr s(ksistack_new(5));
  EXPECT_EQ(s->capacity, 5);
  EXPECT_EQ(s->count, 0);
  EXPECT_NE(s->data, nullptr);
}

TEST(KsistackDeathTest, CapacityMustBePositive) {
  EXPECT_DEATH(ksistack_new(0), "Assertion `capacity > 0' failed");
}

TEST(Ksistack, FreeOfNullDoesNothing) {
  EXPECT_NO_THROW(ksistack_free(nullptr));
}

TEST(Ksistack, CapacityOneGrowsByDoublingAndKeepsEveryValue) {
  const ksistack_ptr s(ksistack_new(1));
  const int capacities[] = {1, 2, 4, 4, 8, 8, 8, 8, 16};
  std::vector<int> pushed;
  for (int i = 0; i < 9; i++) {
    ksistack_push(100 + i, s.get());
    pushed.push_back(100 + i);
    EXPECT_EQ(s->capacity, capacities[i]);
    EXPECT_EQ(ints_of(s), pushed);
  }
}

TEST(Ksistack, PopReturnsTheLastValueAndZeroesItsSlot) {
  const ksistack_ptr s = stack_of({7, 8});
  EXPECT_EQ(ksistack_pop(s.get()), 8);
  EXPECT_EQ(ints_of(s), std::vector<int>{7});
  EXPECT_EQ(s->data[1], 0);
}

TEST(Ksistack, PopOfEmptyIsZeroAndChangesNothing) {
  const ksistack_ptr s(ksistack_new(2));
  EXPECT_EQ(ksistack_pop(s.get()), 0);
  EXPECT_EQ(s->count, 0);
  EXPECT_EQ(s->capacity, 2);
}

TEST(Ksistack, TopIsTheLastValueAndStays) {
  const ksistack_ptr s = stack_of({7, 8});
  EXPECT_EQ(ksistack_top(s.get()), 8);
  EXPECT_EQ(s->count, 2);
}

TEST(Ksistack, TopOfEmptyIsZero) {
  EXPECT_EQ(ksistack_top(ksistack_ptr(ksistack_new(2)).get()), 0);
}

TEST(Ksistack, AtIsTheValue) {
  const ksistack_ptr s = stack_of({7, -8});
  EXPECT_EQ(ksistack_at(s.get(), 0), 7);
  EXPECT_EQ(ksistack_at(s.get(), 1), -8);
}

TEST(Ksistack, InvalidIndexIsFatal) {
  const ksistack_ptr s = stack_of({7, 8});
  for (const int index : {2, 3, 1000})
    EXPECT_EQ(fatal_text([&] { ksistack_at(s.get(), index); }),
              "stack.c:N: invalid index\n");
}

TEST(Ksistack, EveryIndexOfAnEmptyStackIsInvalid) {
  const ksistack_ptr s(ksistack_new(8));
  EXPECT_EQ(fatal_text([&] { ksistack_at(s.get(), 0); }),
            "stack.c:N: invalid index\n");
}

TEST(Ksistack, SortOrdersByTheComparator) {
  const ksistack_ptr s = stack_of({5, -1, 3, 3, 0});
  ksistack_sort(s.get(), compar_int);
  EXPECT_EQ(ints_of(s), (std::vector<int>{-1, 0, 3, 3, 5}));
}

// Comparators that insist on the side on which elements are handed over.
static const ksistack *watched;
static bool is_element(const void *address) {
  return std::less_equal<>()(static_cast<const void *>(watched->data),
                             address) &&
         std::less<>()(address, static_cast<const void *>(watched->data +
                                                          watched->count));
}
static int compar_key_first(const void *a, const void *b) {
  EXPECT_FALSE(is_element(a));
  EXPECT_TRUE(is_element(b));
  return compar_int(a, b);
}
static int compar_key_second(const void *a, const void *b) {
  EXPECT_TRUE(is_element(a));
  EXPECT_FALSE(is_element(b));
  return compar_int(a, b);
}

static ksistack_ptr tens(int count) {
  ksistack_ptr s(ksistack_new(1));
  for (int i = 1; i <= count; i++)
    ksistack_push(10 * i, s.get());
  return s;
}

TEST(Ksistack, ComparatorGetsTheKeyFirstInBsearchAndInsertSorted) {
  const ksistack_ptr s = tens(20);
  watched = s.get();
  EXPECT_EQ(ksistack_bsearch(30, s.get(), compar_key_first), s->data + 2);
  EXPECT_EQ(ksistack_bsearch_index(30, s.get(), compar_key_first), 2);
  ksistack_insert_sorted(35, s.get(), compar_key_first);
  EXPECT_EQ(s->data[3], 35);
}

TEST(Ksistack, ComparatorGetsTheElementFirstInTheOtherSearches) {
  const ksistack_ptr s = tens(20);
  watched = s.get();
  EXPECT_EQ(ksistack_find(30, s.get(), compar_key_second), s->data + 2);
  EXPECT_EQ(ksistack_find_index(30, s.get(), compar_key_second), 2);
  EXPECT_EQ(ksistack_lower_bound(30, s.get(), compar_key_second), 2);
  EXPECT_EQ(ksistack_find_last(30, s.get(), compar_key_second), 2);
  EXPECT_EQ(ksistack_remove_sorted(30, s.get(), compar_key_second), 30);
}

TEST(Ksistack, BsearchFindsEveryValueAndNothingElse) {
  const ksistack_ptr s = tens(12);
  for (int i = 0; i < 12; i++) {
    const int present = 10 * (i + 1);
    EXPECT_EQ(ksistack_bsearch(present, s.get(), compar_int), s->data + i);
    EXPECT_EQ(ksistack_bsearch_index(present, s.get(), compar_int), i);
    EXPECT_EQ(ksistack_bsearch(present + 5, s.get(), compar_int), nullptr);
    EXPECT_EQ(ksistack_bsearch_index(present + 5, s.get(), compar_int), -1);
  }
}

TEST(Ksistack, SearchesOfAnEmptyStackFindNothing) {
  const ksistack_ptr s(ksistack_new(4));
  EXPECT_EQ(ksistack_bsearch(0, s.get(), compar_int), nullptr);
  EXPECT_EQ(ksistack_bsearch_index(0, s.get(), compar_int), -1);
  EXPECT_EQ(ksistack_find(0, s.get(), compar_int), nullptr);
  EXPECT_EQ(ksistack_find_index(0, s.get(), compar_int), -1);
  EXPECT_EQ(ksistack_lower_bound(0, s.get(), compar_int), -1);
  EXPECT_EQ(ksistack_find_last(0, s.get(), compar_int), -1);
}

TEST(Ksistack, FindTakesTheFirstEqualValueOfAnyOrder) {
  const ksistack_ptr s = stack_of({9, 4, 7, 4});
  EXPECT_EQ(ksistack_find(4, s.get(), compar_int), s->data + 1);
  EXPECT_EQ(ksistack_find_index(4, s.get(), compar_int), 1);
  EXPECT_EQ(ksistack_find(5, s.get(), compar_int), nullptr);
  EXPECT_EQ(ksistack_find_index(5, s.get(), compar_int), -1);
}

TEST(Ksistack, LowerBoundIsTheFirstOfEqualValues) {
  const ksistack_ptr s = stack_of({1, 3, 3, 5});
  EXPECT_EQ(ksistack_lower_bound(3, s.get(), compar_int), 1);
  EXPECT_EQ(ksistack_lower_bound(1, s.get(), compar_int), 0);
  EXPECT_EQ(ksistack_lower_bound(5, s.get(), compar_int), 3);
}

TEST(Ksistack, LowerBoundOfAnAbsentValueIsMinusOne) {
  const ksistack_ptr s = stack_of({1, 3, 3, 5});
  for (const int absent : {0, 2, 4, 6})
    EXPECT_EQ(ksistack_lower_bound(absent, s.get(), compar_int), -1) << absent;
}

TEST(Ksistack, FindLastIsTheLastOfEqualValues) {
  const ksistack_ptr s = stack_of({2, 3, 3, 3, 7});
  EXPECT_EQ(ksistack_find_last(3, s.get(), compar_int), 3);
  EXPECT_EQ(ksistack_find_last(2, s.get(), compar_int), 0);
  EXPECT_EQ(ksistack_find_last(7, s.get(), compar_int), 4);
}

TEST(Ksistack, FindLastOfAnAbsentValueIsMinusOne) {
  const ksistack_ptr s = stack_of({2, 3, 3, 3, 7});
  for (const int absent : {1, 4, 8})
    EXPECT_EQ(ksistack_find_last(absent, s.get(), compar_int), -1) << absent;
}

TEST(Ksistack, FindLastWalksOverEqualsAtAnyCount) {
  for (int less = 0; less <= 20; less++) {
    for (int equal = 1; equal <= 20; equal++) {
      for (const int more : {0, 1, 8, 9}) {
        const ksistack_ptr s(ksistack_new(1));
        for (int i = 0; i < less + equal + more; i++)
          ksistack_push(i < less ? 1 : i < less + equal ? 2 : 3, s.get());
        ASSERT_EQ(ksistack_find_last(2, s.get(), compar_int), less + equal - 1)
            << less << " " << equal << " " << more;
      }
    }
  }
}

TEST(Ksistack, InsertSortedPlacesEqualValuesInTheirOrderOfArrival) {
  const ksistack_ptr s(ksistack_new(1));
  for (const int value : {202, 101, 201, 300, 200, 100})
    ksistack_insert_sorted(value, s.get(), compar_hundreds);
  EXPECT_EQ(ints_of(s), (std::vector<int>{101, 100, 202, 201, 200, 300}));
}

TEST(Ksistack, InsertSortedIsAfterAllEqualsAtAnyCount) {
  for (int equal = 0; equal <= 40; equal++) {
    const ksistack_ptr s = five_hundreds(equal);
    ksistack_insert_at(400, s.get(), 0);
    ksistack_push(600, s.get());
    ksistack_insert_sorted(599, s.get(), compar_hundreds);
    ASSERT_EQ(s->data[equal + 1], 599) << equal;
    ASSERT_EQ(s->data[equal + 2], 600) << equal;
  }
}

TEST(Ksistack, RemoveSortedReturnsTheValueAndKeepsItBehindTheEnd) {
  const ksistack_ptr s = stack_of({1, 2, 3, 4});
  EXPECT_EQ(ksistack_remove_sorted(2, s.get(), compar_int), 2);
  EXPECT_EQ(ints_of(s), (std::vector<int>{1, 3, 4}));
  EXPECT_EQ(s->data[3], 2);
}

TEST(Ksistack, RemoveSortedTakesTheOneThatNarrowingLeavesFirst) {
  // 9 equals: the range [0, 9) becomes [4, 9); 17: [8, 17), then [12, 17).
  const int expected[][2] = {{8, 500}, {9, 504}, {16, 508}, {17, 512}};
  for (const auto &[count, value] : expected) {
    const ksistack_ptr s = five_hundreds(count);
    EXPECT_EQ(ksistack_remove_sorted(555, s.get(), compar_hundreds), value);
    EXPECT_EQ(s->count, count - 1);
    EXPECT_EQ(s->data[count - 1], value);
  }
}

TEST(Ksistack, RemoveSortedOfAnAbsentValueIsZeroAndChangesNothing) {
  for (const int count : {3, 8, 9, 30}) {
    const ksistack_ptr s = tens(count);
    const std::vector<int> before = ints_of(s);
    for (const int value : {5, 25, 10 * count + 5})
      EXPECT_EQ(ksistack_remove_sorted(value, s.get(), compar_int), 0);
    EXPECT_EQ(ints_of(s), before);
  }
}

TEST(Ksistack, InsertAtMovesTheLaterValuesUp) {
  const ksistack_ptr s = stack_of({1, 2, 3, 4}); // full: capacity 4
  ASSERT_EQ(s->capacity, 4);
  ksistack_insert_at(9, s.get(), 1);
  EXPECT_EQ(ints_of(s), (std::vector<int>{1, 9, 2, 3, 4}));
  EXPECT_EQ(s->capacity, 8);
  ksistack_insert_at(8, s.get(), 5);
  EXPECT_EQ(s->data[5], 8);
}

TEST(Ksistack, RemoveAtMovesTheLaterValuesDown) {
  const ksistack_ptr s = stack_of({1, 2, 3, 4});
  EXPECT_EQ(ksistack_remove_at(s.get(), 0), 1);
  EXPECT_EQ(ints_of(s), (std::vector<int>{2, 3, 4}));
  EXPECT_EQ(ksistack_remove_at(s.get(), 2), 4);
  EXPECT_EQ(ints_of(s), (std::vector<int>{2, 3}));
}

} // namespace kestro
