// A growable array of fixed-size elements: a stack, an array by position and,
// kept in order by a comparator, a sorted set with binary search.
#pragma once

#include <cstddef>
#include <memory>

#include "base/comparators.h"

namespace kestro {

// The buffer holds capacity + 1 elements:
//
//   buffer -> | scratch | element 0 | element 1 | ... |
//                         ^ data
//
// Removal copies the removed element to the scratch slot and returns its
// address, which stays valid until the next removal.
struct ksstack {
  int capacity;     // elements that fit before the next growth, at least 1
  int element_size; // bytes
  int count;        // elements held
  char *data;       // element 0
  char *buffer;     // element -1, the scratch slot; behind this header in one
                    // block until the first growth, then a block of its own
};

// Element addresses go in and come out as void *; what is not found is a null
// address or index -1.  A full stack doubles its capacity first, so an element
// of the stack itself must not be handed to push or insert.

// An empty stack; freed with ksstack_free.  Capacity must be positive.
ksstack *ksstack_new(int capacity, int element_size);
// The same in caller memory of ksstack_bytes() bytes, aligned as malloc's;
// ended with ksstack_finish, which frees what the stack has grown to.
ksstack *ksstack_init(void *memory, int capacity, int element_size);
size_t ksstack_bytes(int capacity, int element_size);
// The same with a buffer in a block of its own from the start.
void ksstack_init_apart(ksstack *s, int capacity, int element_size);
void ksstack_finish(ksstack *s);
// Same capacity and elements, scratch slot included.
ksstack *ksstack_copy(const ksstack *s);
// Frees the stack, which may be null; what elements point at stays.
void ksstack_free(ksstack *s);

// Copies an element to the end; returns the copy's address.
void *ksstack_push(const void *element, ksstack *s);
// The last element, null when empty.
void *ksstack_top(const ksstack *s);
// Element index; dies with "invalid index" for index >= count.
[[noreturn]] void ksstack_die_of_index();
inline void *ksstack_at(const ksstack *s, int index) {
  if (index >= s->count)
    ksstack_die_of_index();
  return s->data + static_cast<ptrdiff_t>(index) * s->element_size;
}
// Removes element index, which is not checked; returns the scratch slot.  The
// vacated place is zero-filled.
void *ksstack_remove_at(ksstack *s, int index);

// Sorts with qsort.
void ksstack_sort(ksstack *s, comparator compare);
// Binary search with compare(key, element).
void *ksstack_bsearch(const void *key, const ksstack *s, comparator compare);
int ksstack_bsearch_index(const void *key, const ksstack *s,
                          comparator compare);
// Index of the first element not less than key if it equals key, with
// compare(element, key).
int ksstack_lower_bound(const void *key, const ksstack *s, comparator compare);

// Inserts in order after all equal elements, with compare(key, element);
// returns the new element's address.
void *ksstack_insert_sorted(const void *element, ksstack *s,
                            comparator compare);
// Inserts at index, which is not checked.
void *ksstack_insert_at(const void *element, ksstack *s, int index);
// Gives back room to spare where that is worth it; the stack may move.
ksstack *ksstack_trim(ksstack *s);

struct ksstack_deleter {
  void operator()(ksstack *s) const { ksstack_free(s); }
};
using ksstack_ptr = std::unique_ptr<ksstack, ksstack_deleter>;

// Element 0 as an array of T, valid until the next growth.
template <class T> T *ksstack_array(const ksstack *s) {
  return reinterpret_cast<T *>(s->data);
}

// A copy of element index; dies with "invalid index" for index >= count.
template <class T> T ksstack_get(const ksstack *s, int index) {
  return *static_cast<T *>(ksstack_at(s, index));
}

} // namespace kestro
