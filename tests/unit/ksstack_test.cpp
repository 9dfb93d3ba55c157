#include "base/ksstack.h"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/xmalloc.h"
#include "reference/base/ksstack.h"
#include "support/fatal.h"

namespace kestro {

static ksstack_ptr new_ints(int capacity) {
  return ksstack_ptr(ksstack_new(capacity, sizeof(int)));
}

static ksstack_ptr stack_of(const std::vector<int> &values) {
  ksstack_ptr s = new_ints(1);
  for (const int value : values)
    ksstack_push(&value, s.get());
  return s;
}

static std::vector<int> ints_of(const ksstack *s) {
  const int *first = ksstack_array<int>(s);
  return std::vector<int>(first, first + s->count);
}
static std::vector<int> ints_of(const ksstack_ptr &s) {
  return ints_of(s.get());
}

static int int_at(const void *address) {
  return *static_cast<const int *>(address);
}

// An element of 12 bytes that is sorted by its key alone.
struct tag {
  int key;
  int arrival;
  int padding;
};

static int compar_tag(const void *a, const void *b) {
  return compar_int(a, b); // the key comes first
}

// Tags of one key and arrivals 0 .. count-1.
static ksstack_ptr equal_tags(int key, int count) {
  ksstack_ptr s(ksstack_new(4, sizeof(tag)));
  for (int i = 0; i < count; i++) {
    const tag t = {key, i, 0};
    ksstack_push(&t, s.get());
  }
  return s;
}

TEST(Ksstack, NewStackIsEmpty) {
  const ksstack_ptr s(ksstack_new(5, 12));
  EXPECT_EQ(s->capacity, 5);
  EXPECT_EQ(s->element_size, 12);
  EXPECT_EQ(s->count, 0);
  EXPECT_EQ(s->data, s->buffer + 12); // behind the scratch slot
}

TEST(KsstackDeathTest, CapacityMustBePositive) {
  EXPECT_DEATH(ksstack_new(0, 4), "Assertion `capacity > 0");
}

TEST(Ksstack, CreationDiesOfMemoryThatIsNotThere) {
  const int huge = 2147483647;
  EXPECT_EQ(fatal_text([&] { ksstack_free(ksstack_new(huge, huge)); }),
            "xmalloc.c:N: not enough memory\n");
}

TEST(Ksstack, FreeOfNullDoesNothing) { EXPECT_NO_THROW(ksstack_free(nullptr)); }

TEST(Ksstack, CapacityOneGrowsByDoublingAndKeepsEveryElement) {
  const ksstack_ptr s = new_ints(1);
  const int capacities[] = {1, 2, 4, 4, 8, 8, 8, 8, 16};
  std::vector<int> pushed;
  for (int i = 0; i < 9; i++) {
    const int value = 100 + i;
    ksstack_push(&value, s.get());
    pushed.push_back(value);
    EXPECT_EQ(s->capacity, capacities[i]);
    EXPECT_EQ(s->data, s->buffer + sizeof(int));
    EXPECT_EQ(ints_of(s), pushed);
  }
}

TEST(Ksstack, GrowthKeepsWideElements) {
  const ksstack_ptr s = equal_tags(3, 50);
  for (int i = 0; i < 50; i++)
    EXPECT_EQ(ksstack_get<tag>(s.get(), i).arrival, i);
}

TEST(Ksstack, HoldsEightByteElements) {
  const ksstack_ptr s(ksstack_new(1, sizeof(double)));
  for (const double value : {0.5, -1e300, 2.25})
    ksstack_push(&value, s.get());
  EXPECT_EQ(ksstack_get<double>(s.get(), 0), 0.5);
  EXPECT_EQ(ksstack_get<double>(s.get(), 1), -1e300);
  EXPECT_EQ(ksstack_get<double>(s.get(), 2), 2.25);
}

TEST(Ksstack, PushReturnsTheCopy) {
  const ksstack_ptr s = stack_of({1, 2});
  const int value = 3;
  const void *copy = ksstack_push(&value, s.get());
  EXPECT_EQ(copy, ksstack_at(s.get(), 2));
  EXPECT_EQ(int_at(copy), 3);
}

TEST(Ksstack, TopIsTheLastElementAndStays) {
  const ksstack_ptr s = stack_of({4, 5});
  EXPECT_EQ(ksstack_top(s.get()), ksstack_at(s.get(), 1));
  EXPECT_EQ(s->count, 2);
}

TEST(Ksstack, TopOfEmptyIsNull) {
  EXPECT_EQ(ksstack_top(new_ints(3).get()), nullptr);
}

TEST(Ksstack, AtIsTheAddressOfTheElement) {
  const ksstack_ptr s = stack_of({4, 5, 6});
  EXPECT_EQ(ksstack_at(s.get(), 1), s->data + sizeof(int));
  EXPECT_EQ(int_at(ksstack_at(s.get(), 2)), 6);
}

TEST(Ksstack, InvalidIndexIsFatal) {
  const ksstack_ptr s = stack_of({4, 5, 6});
  for (const int index : {3, 4, 1000})
    EXPECT_EQ(fatal_text([&] { ksstack_at(s.get(), index); }),
              "stack.c:N: invalid index\n");
  EXPECT_EQ(fatal_text([&] { ksstack_get<int>(s.get(), 3); }),
            "stack.c:N: invalid index\n");
}

TEST(Ksstack, EveryIndexOfAnEmptyStackIsInvalid) {
  const ksstack_ptr s = new_ints(8);
  EXPECT_EQ(fatal_text([&] { ksstack_at(s.get(), 0); }),
            "stack.c:N: invalid index\n");
}

TEST(Ksstack, PopReturnsTheScratchSlotAndZeroesThePlace) {
  const ksstack_ptr s = stack_of({7, 8});
  const void *popped = ksstack_pop(s.get());
  EXPECT_EQ(popped, s->buffer);
  EXPECT_EQ(int_at(popped), 8);
  EXPECT_EQ(ints_of(s), std::vector<int>{7});
  EXPECT_EQ(ksstack_array<int>(s.get())[1], 0);
}

TEST(Ksstack, PoppedElementStaysUntilTheNextPop) {
  const ksstack_ptr s = stack_of({7, 8, 9, 10});
  const void *popped = ksstack_pop(s.get());
  const int value = 11;
  ksstack_push(&value, s.get());
  EXPECT_EQ(int_at(popped), 10);
  ksstack_pop(s.get());
  EXPECT_EQ(int_at(popped), 11);
}

TEST(Ksstack, PopOfEmptyIsNullAndChangesNothing) {
  const ksstack_ptr s = stack_of({7});
  ksstack_pop(s.get());
  const int capacity = s->capacity;
  EXPECT_EQ(ksstack_pop(s.get()), nullptr);
  EXPECT_EQ(s->count, 0);
  EXPECT_EQ(s->capacity, capacity);
  EXPECT_EQ(int_at(s->buffer), 7); // the scratch slot
}

TEST(Ksstack, RemoveAtMovesTheLaterElementsDown) {
  const ksstack_ptr s = stack_of({1, 2, 3, 4});
  const void *removed = ksstack_remove_at(s.get(), 1);
  EXPECT_EQ(removed, s->buffer);
  EXPECT_EQ(int_at(removed), 2);
  EXPECT_EQ(ints_of(s), (std::vector<int>{1, 3, 4}));
  EXPECT_EQ(ksstack_array<int>(s.get())[3], 0);
}

TEST(Ksstack, RemoveAtTakesTheLastElementToo) {
  const ksstack_ptr s = stack_of({1, 2});
  EXPECT_EQ(int_at(ksstack_remove_at(s.get(), 1)), 2);
  EXPECT_EQ(ints_of(s), std::vector<int>{1});
}

TEST(Ksstack, InsertAtMovesTheLaterElementsUp) {
  const ksstack_ptr s = stack_of({1, 2, 3, 4}); // full: capacity 4
  ASSERT_EQ(s->capacity, 4);
  const int value = 9;
  const void *place = ksstack_insert_at(&value, s.get(), 1);
  EXPECT_EQ(place, ksstack_at(s.get(), 1));
  EXPECT_EQ(ints_of(s), (std::vector<int>{1, 9, 2, 3, 4}));
  EXPECT_EQ(s->capacity, 8);
}

TEST(Ksstack, InsertAtServesBothEnds) {
  const ksstack_ptr s = stack_of({5});
  const int low = 1;
  const int high = 9;
  ksstack_insert_at(&low, s.get(), 0);
  ksstack_insert_at(&high, s.get(), 2);
  EXPECT_EQ(ints_of(s), (std::vector<int>{1, 5, 9}));
}

TEST(Ksstack, CopyIsIndependentAndHoldsTheScratchSlot) {
  const ksstack_ptr s = stack_of({1, 2, 3, 4, 5});
  ksstack_pop(s.get());
  const ksstack_ptr copy(ksstack_copy(s.get()));
  EXPECT_EQ(copy->capacity, s->capacity);
  EXPECT_EQ(copy->element_size, s->element_size);
  EXPECT_EQ(ints_of(copy), (std::vector<int>{1, 2, 3, 4}));
  EXPECT_EQ(int_at(copy->buffer), 5);
  EXPECT_EQ(copy->data, copy->buffer + sizeof(int));
  ksstack_array<int>(copy.get())[0] = 100;
  EXPECT_EQ(ints_of(s)[0], 1);
}

TEST(Ksstack, SortOrdersByTheComparator) {
  const ksstack_ptr s = stack_of({5, -1, 3, 3, 0});
  ksstack_sort(s.get(), compar_int);
  EXPECT_EQ(ints_of(s), (std::vector<int>{-1, 0, 3, 3, 5}));
  const ksstack_ptr empty = new_ints(2);
  ksstack_sort(empty.get(), compar_int);
  EXPECT_EQ(empty->count, 0);
}

// Comparators that insist on the side on which the key is handed over.
static const int wanted = 30;
static int compar_key_first(const void *a, const void *b) {
  EXPECT_EQ(a, &wanted);
  EXPECT_NE(b, &wanted);
  return compar_int(a, b);
}
static int compar_key_second(const void *a, const void *b) {
  EXPECT_NE(a, &wanted);
  EXPECT_EQ(b, &wanted);
  return compar_int(a, b);
}

static ksstack_ptr tens(int count) {
  std::vector<int> values;
  for (int i = 1; i <= count; i++)
    values.push_back(10 * i);
  return stack_of(values);
}

TEST(Ksstack, ComparatorGetsTheKeyFirstInBsearchAndInsertSorted) {
  const ksstack_ptr s = tens(20);
  EXPECT_EQ(ksstack_bsearch(&wanted, s.get(), compar_key_first),
            ksstack_at(s.get(), 2));
  EXPECT_EQ(ksstack_bsearch_index(&wanted, s.get(), compar_key_first), 2);
  EXPECT_EQ(ksstack_insert_sorted(&wanted, s.get(), compar_key_first),
            ksstack_at(s.get(), 3));
}

TEST(Ksstack, ComparatorGetsTheElementFirstInTheOtherSearches) {
  const ksstack_ptr s = tens(20);
  EXPECT_EQ(ksstack_find(&wanted, s.get(), compar_key_second),
            ksstack_at(s.get(), 2));
  EXPECT_EQ(ksstack_find_index(&wanted, s.get(), compar_key_second), 2);
  EXPECT_EQ(ksstack_lower_bound(&wanted, s.get(), compar_key_second), 2);
  EXPECT_EQ(int_at(ksstack_remove_sorted(&wanted, s.get(), compar_key_second)),
            30);
}

TEST(Ksstack, BsearchFindsEveryElementAndNothingElse) {
  const ksstack_ptr s = tens(12);
  for (int i = 0; i < 12; i++) {
    const int present = 10 * (i + 1);
    const int absent = present + 5;
    EXPECT_EQ(ksstack_bsearch(&present, s.get(), compar_int),
              ksstack_at(s.get(), i));
    EXPECT_EQ(ksstack_bsearch_index(&present, s.get(), compar_int), i);
    EXPECT_EQ(ksstack_bsearch(&absent, s.get(), compar_int), nullptr);
    EXPECT_EQ(ksstack_bsearch_index(&absent, s.get(), compar_int), -1);
  }
}

TEST(Ksstack, SearchesOfAnEmptyStackFindNothing) {
  const ksstack_ptr s = new_ints(4);
  const int key = 0;
  EXPECT_EQ(ksstack_bsearch(&key, s.get(), compar_int), nullptr);
  EXPECT_EQ(ksstack_bsearch_index(&key, s.get(), compar_int), -1);
  EXPECT_EQ(ksstack_find(&key, s.get(), compar_int), nullptr);
  EXPECT_EQ(ksstack_find_index(&key, s.get(), compar_int), -1);
  EXPECT_EQ(ksstack_remove_sorted(&key, s.get(), compar_int), nullptr);
}

TEST(Ksstack, FindTakesTheFirstEqualElementOfAnyOrder) {
  const ksstack_ptr s = stack_of({9, 4, 7, 4});
  const int key = 4;
  EXPECT_EQ(ksstack_find(&key, s.get(), compar_int), ksstack_at(s.get(), 1));
  EXPECT_EQ(ksstack_find_index(&key, s.get(), compar_int), 1);
  const int absent = 5;
  EXPECT_EQ(ksstack_find(&absent, s.get(), compar_int), nullptr);
  EXPECT_EQ(ksstack_find_index(&absent, s.get(), compar_int), -1);
}

static int lower_bound_in(const std::vector<int> &values, int key) {
  return ksstack_lower_bound(&key, stack_of(values).get(), compar_int);
}

TEST(Ksstack, LowerBoundOnEmptyIsMinusOne) {
  EXPECT_EQ(lower_bound_in({}, 3), -1);
}

TEST(Ksstack, LowerBoundIsTheFirstOfEqualElements) {
  EXPECT_EQ(lower_bound_in({1, 3, 3, 5}, 3), 1);
  EXPECT_EQ(lower_bound_in({3, 3, 3, 3}, 3), 0);
  EXPECT_EQ(lower_bound_in({1, 3, 3, 5}, 5), 3);
}

TEST(Ksstack, LowerBoundOfAnAbsentKeyIsMinusOne) {
  EXPECT_EQ(lower_bound_in({1, 3, 3, 5}, 4), -1);
  EXPECT_EQ(lower_bound_in({1, 3, 3, 5}, 0), -1);
  EXPECT_EQ(lower_bound_in({1, 3, 3, 5}, 6), -1);
}

TEST(Ksstack, InsertSortedIntoEmpty) {
  const ksstack_ptr s = new_ints(1);
  const int value = 4;
  EXPECT_EQ(ksstack_insert_sorted(&value, s.get(), compar_int), s->data);
  EXPECT_EQ(ints_of(s), std::vector<int>{4});
}

// Adds a tag that arrives last and tells where it came to stand.
static int place_of_newcomer(int key, ksstack *s) {
  const tag newcomer = {key, s->count, 0};
  const char *place =
      static_cast<char *>(ksstack_insert_sorted(&newcomer, s, compar_tag));
  const auto offset = place - s->data;
  EXPECT_EQ(ksstack_array<tag>(s)[offset / 12].arrival, newcomer.arrival);
  return static_cast<int>(offset / 12);
}

TEST(Ksstack, InsertSortedPlacesEqualKeysInTheirOrderOfArrival) {
  const ksstack_ptr s(ksstack_new(1, sizeof(tag)));
  const int keys[] = {2, 1, 2, 3, 2, 1};
  for (const int key : keys)
    place_of_newcomer(key, s.get());
  const int expected[][2] = {{1, 1}, {1, 5}, {2, 0}, {2, 2}, {2, 4}, {3, 3}};
  for (int i = 0; i < 6; i++) {
    EXPECT_EQ(ksstack_get<tag>(s.get(), i).key, expected[i][0]) << i;
    EXPECT_EQ(ksstack_get<tag>(s.get(), i).arrival, expected[i][1]) << i;
  }
}

TEST(Ksstack, InsertSortedIsAfterAllEqualsAtAnyCount) {
  // less keys below, equal ones, more keys above: around the eight elements up
  // to which no bisection takes place.
  for (int less = 0; less <= 20; less++) {
    for (int equal = 0; equal <= 20; equal++) {
      for (const int more : {0, 1, 8, 9}) {
        const ksstack_ptr s = equal_tags(1, less);
        for (int i = 0; i < equal + more; i++) {
          const tag t = {i < equal ? 2 : 3, less + i, 0};
          ksstack_push(&t, s.get());
        }
        ASSERT_EQ(place_of_newcomer(2, s.get()), less + equal)
            << less << " " << equal << " " << more;
      }
    }
  }
}

TEST(Ksstack, RemoveSortedTakesTheFirstOfEightEquals) {
  const ksstack_ptr s = equal_tags(5, 8);
  const int key = 5;
  const void *removed = ksstack_remove_sorted(&key, s.get(), compar_tag);
  EXPECT_EQ(removed, s->buffer);
  EXPECT_EQ(static_cast<const tag *>(removed)->arrival, 0);
  EXPECT_EQ(s->count, 7);
  EXPECT_EQ(ksstack_get<tag>(s.get(), 0).arrival, 1);
}

TEST(Ksstack, RemoveSortedTakesTheOneThatNarrowingLeavesFirst) {
  // 9 equals: the range [0, 9) becomes [4, 9); 17: [8, 17), then [12, 17).
  const int expected[][2] = {{9, 4}, {16, 8}, {17, 12}};
  for (const auto &[count, arrival] : expected) {
    const ksstack_ptr s = equal_tags(5, count);
    const int key = 5;
    const void *removed = ksstack_remove_sorted(&key, s.get(), compar_tag);
    EXPECT_EQ(static_cast<const tag *>(removed)->arrival, arrival) << count;
  }
}

TEST(Ksstack, RemoveSortedOfAnAbsentKeyIsNullAndChangesNothing) {
  for (const int count : {3, 8, 9, 30}) {
    const ksstack_ptr s = tens(count);
    const std::vector<int> before = ints_of(s);
    for (const int key : {5, 25, 10 * count + 5})
      EXPECT_EQ(ksstack_remove_sorted(&key, s.get(), compar_int), nullptr);
    EXPECT_EQ(ints_of(s), before);
  }
}

static bool is_one_block(const ksstack *s) {
  return s->buffer == reinterpret_cast<const char *>(s + 1);
}

TEST(Ksstack, BufferFollowsTheHeaderUntilTheFirstGrowth) {
  const ksstack_ptr s = new_ints(2);
  EXPECT_TRUE(is_one_block(s.get()));
  for (int i = 0; i < 9; i++) { // moved out once, then grown twice more
    ksstack_push(&i, s.get());
    EXPECT_EQ(is_one_block(s.get()), i < 2);
    EXPECT_EQ(s->data, s->buffer + sizeof(int));
  }
  EXPECT_EQ(ints_of(s), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(Ksstack, FirstGrowthTakesTheScratchSlotAlong) {
  const ksstack_ptr s = stack_of({7});
  ksstack_pop(s.get());
  for (const int value : {1, 2})
    ksstack_push(&value, s.get());
  EXPECT_FALSE(is_one_block(s.get()));
  EXPECT_EQ(int_at(s->buffer), 7);
}

TEST(Ksstack, CopyOfAGrownStackIsOneBlockAgain) {
  const ksstack_ptr s = stack_of({1, 2, 3});
  EXPECT_FALSE(is_one_block(s.get()));
  const ksstack_ptr copy(ksstack_copy(s.get()));
  EXPECT_TRUE(is_one_block(copy.get()));
  EXPECT_EQ(ints_of(copy), (std::vector<int>{1, 2, 3}));
}

TEST(Ksstack, InitUsesTheCallersMemoryUntilItGrows) {
  std::vector<max_align_t> memory(
      ksstack_bytes(2, sizeof(int)) / sizeof(max_align_t) + 1);
  ksstack *s = ksstack_init(memory.data(), 2, sizeof(int));
  EXPECT_EQ(static_cast<void *>(s), static_cast<void *>(memory.data()));
  EXPECT_TRUE(is_one_block(s));
  ksstack_finish(s); // nothing to free yet
  for (int i = 0; i < 5; i++)
    ksstack_push(&i, s);
  EXPECT_FALSE(is_one_block(s));
  EXPECT_EQ(ints_of(s), (std::vector<int>{0, 1, 2, 3, 4}));
  ksstack_finish(s);
}

TEST(Ksstack, BytesAreTheHeaderAndOneElementMoreThanTheCapacity) {
  EXPECT_EQ(ksstack_bytes(3, 12), sizeof(ksstack) + 4 * 12);
}

TEST(Ksstack, ReleaseOfAGrownStackHandsOverTheElements) {
  for (const int count : {2, 3, 9}) {
    ksstack_ptr s = new_ints(2);
    std::vector<int> pushed;
    for (int i = 0; i < count; i++) {
      ksstack_push(&i, s.get());
      pushed.push_back(i);
    }
    int released = -1;
    const xptr<int> array(
        static_cast<int *>(ksstack_release(s.release(), &released)));
    ASSERT_EQ(released, count);
    EXPECT_EQ(std::vector<int>(array.get(), array.get() + released), pushed);
  }
}

TEST(Ksstack, ReleaseHandsOverTheElements) {
  ksstack_ptr s = stack_of({3, 1, 2});
  int count = -1;
  const xptr<int> array(
      static_cast<int *>(ksstack_release(s.release(), &count)));
  ASSERT_EQ(count, 3);
  EXPECT_EQ(std::vector<int>(array.get(), array.get() + 3),
            (std::vector<int>{3, 1, 2}));
}

TEST(Ksstack, ReleaseOfEmptyIsNullWithCountZero) {
  int count = -1;
  EXPECT_EQ(ksstack_release(new_ints(4).release(), &count), nullptr);
  EXPECT_EQ(count, 0);
}

TEST(Ksstack, TrimGivesBackRoomThatIsWorthIt) {
  ksstack_ptr s(ksstack_new(1000, sizeof(int)));
  for (int i = 0; i < 7; i++)
    ksstack_push(&i, s.get());
  s.reset(ksstack_trim(s.release()));
  EXPECT_EQ(s->capacity, 7);
  ASSERT_EQ(s->count, 7);
  for (int i = 0; i < 7; i++)
    EXPECT_EQ(ksstack_get<int>(s.get(), i), i);
  for (int i = 7; i < 40; i++) // grows as any other
    ksstack_push(&i, s.get());
  EXPECT_EQ(ksstack_get<int>(s.get(), 39), 39);
}

TEST(Ksstack, TrimLeavesLittleRoomAndGrownStacksAlone) {
  ksstack_ptr small(ksstack_new(10, sizeof(int)));
  ksstack *address = small.get();
  EXPECT_EQ(ksstack_trim(address), address);
  EXPECT_EQ(small->capacity, 10);
  ksstack_ptr grown(ksstack_new(1, sizeof(int)));
  for (int i = 0; i < 600; i++)
    ksstack_push(&i, grown.get());
  grown->count = 1;
  const int capacity = grown->capacity;
  address = grown.get();
  EXPECT_EQ(ksstack_trim(address), address);
  EXPECT_EQ(grown->capacity, capacity);
}

TEST(Ksstack, TrimmedEmptyStackHoldsOne) {
  ksstack_ptr s(ksstack_new(1000, sizeof(int)));
  s.reset(ksstack_trim(s.release()));
  EXPECT_EQ(s->capacity, 1);
  const int value = 5;
  ksstack_push(&value, s.get());
  ksstack_push(&value, s.get());
  EXPECT_EQ(s->count, 2);
}

} // namespace kestro
