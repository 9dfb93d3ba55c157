// A growable array of ints: the narrow sibling of ksstack, with elements
// passed by value.
#pragma once

#include <memory>

#include "base/comparators.h"

namespace kestro {

struct ksistack {
  int capacity; // words that fit before the next growth, at least 1
  int count;    // words held
  int *data;    // the allocation
};

// An empty stack; freed with ksistack_free.  Capacity must be positive.
ksistack *ksistack_new(int capacity);
void ksistack_free(ksistack *s);

// A full stack doubles its capacity first.
void ksistack_push(int value, ksistack *s);
// The last value, 0 when empty; pop removes it and zeroes its slot.
int ksistack_pop(ksistack *s);
int ksistack_top(const ksistack *s);
// The value at index; dies with "invalid index" for index >= count.
int ksistack_at(const ksistack *s, int index);

// Comparators receive the addresses of values.
void ksistack_sort(ksistack *s, comparator compare);
// Binary search with compare(key, element).
int *ksistack_bsearch(int value, const ksistack *s, comparator compare);
int ksistack_bsearch_index(int value, const ksistack *s, comparator compare);
// First equal value from index 0, with compare(element, key).
int *ksistack_find(int value, const ksistack *s, comparator compare);
int ksistack_find_index(int value, const ksistack *s, comparator compare);
// Index of the first element not less than value if it equals it, else -1;
// index of the last element equal to value, else -1; compare(element, key).
int ksistack_lower_bound(int value, const ksistack *s, comparator compare);
int ksistack_find_last(int value, const ksistack *s, comparator compare);

// Inserts in order after all equal values, with compare(key, element).
void ksistack_insert_sorted(int value, ksistack *s, comparator compare);
// Removes an equal value and returns it, 0 when absent, with
// compare(element, key).
int ksistack_remove_sorted(int value, ksistack *s, comparator compare);
// By position, which is not checked.
void ksistack_insert_at(int value, ksistack *s, int index);
int ksistack_remove_at(ksistack *s, int index);

struct ksistack_deleter {
  void operator()(ksistack *s) const { ksistack_free(s); }
};
using ksistack_ptr = std::unique_ptr<ksistack, ksistack_deleter>;

} // namespace kestro
