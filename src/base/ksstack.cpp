// Growable arrays of fixed-size elements.
//
// Elements are moved as bytes, so they must be trivially copyable.  The sorted
// operations bisect while more than eight elements are in question and then
// walk: below that a linear scan is cheaper than further bisection.

#include "base/ksstack.h"

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

// Range in which the sorted operations stop bisecting.
static constexpr int scan_limit = 8;

static char *element_at(const ksstack *s, int index) {
  return s->data + static_cast<ptrdiff_t>(index) * s->element_size;
}

static size_t bytes_of(const ksstack *s, int count) {
  return static_cast<size_t>(count) * static_cast<size_t>(s->element_size);
}

static size_t buffer_bytes(const ksstack *s) {
  return (static_cast<size_t>(s->capacity) + 1) *
         static_cast<size_t>(s->element_size);
}

// The first buffer follows the header in its block: most stacks never grow.
static char *first_buffer(ksstack *s) {
  return reinterpret_cast<char *>(s + 1);
}

size_t ksstack_bytes(int capacity, int element_size) {
  assert(capacity > 0 && element_size > 0);
  return sizeof(ksstack) + (static_cast<size_t>(capacity) + 1) *
                               static_cast<size_t>(element_size);
}

ksstack *ksstack_new(int capacity, int element_size) {
  return ksstack_init(xmalloc(ksstack_bytes(capacity, element_size)), capacity,
                      element_size);
}

ksstack *ksstack_init(void *memory, int capacity, int element_size) {
  auto *s = static_cast<ksstack *>(memory);
  s->capacity = capacity;
  s->element_size = element_size;
  s->count = 0;
  s->buffer = first_buffer(s);
  s->data = s->buffer + element_size;
  return s;
}

void ksstack_init_apart(ksstack *s, int capacity, int element_size) {
  assert(capacity > 0 && element_size > 0);
  s->capacity = capacity;
  s->element_size = element_size;
  s->count = 0;
  s->buffer = static_cast<char *>(xmalloc(buffer_bytes(s)));
  s->data = s->buffer + element_size;
}

ksstack *ksstack_copy(const ksstack *s) {
  ksstack *copy = ksstack_new(s->capacity, s->element_size);
  copy->count = s->count;
  memcpy(copy->buffer, s->buffer, buffer_bytes(s));
  return copy;
}

void ksstack_free(ksstack *s) {
  if (!s)
    return;
  ksstack_finish(s);
  xfree(s);
}

void ksstack_finish(ksstack *s) {
  if (s->buffer != first_buffer(s))
    xfree(s->buffer);
}

static void grow(ksstack *s) {
  if (s->capacity > INT_MAX / 2)
    die_out_of_memory();
  const size_t bytes = (2 * static_cast<size_t>(s->capacity) + 1) *
                       static_cast<size_t>(s->element_size);
  if (s->buffer == first_buffer(s)) {
    char *larger = static_cast<char *>(xmalloc(bytes));
    memcpy(larger, s->buffer, buffer_bytes(s));
    s->buffer = larger;
  } else {
    s->buffer = static_cast<char *>(xrealloc(s->buffer, bytes));
  }
  s->data = s->buffer + s->element_size;
  s->capacity *= 2;
}

void *ksstack_push(const void *element, ksstack *s) {
  return ksstack_insert_at(element, s, s->count);
}

void *ksstack_top(const ksstack *s) {
  return s->count ? element_at(s, s->count - 1) : nullptr;
}

void ksstack_die_of_index() { die("stack.c", "invalid index\n"); }

void *ksstack_remove_at(ksstack *s, int index) {
  char *removed = element_at(s, index);
  memcpy(s->buffer, removed, bytes_of(s, 1));
  memmove(removed, removed + s->element_size,
          bytes_of(s, s->count - index - 1));
  s->count--;
  memset(element_at(s, s->count), 0, bytes_of(s, 1));
  return s->buffer;
}

void ksstack_sort(ksstack *s, comparator compare) {
  qsort(s->data, static_cast<size_t>(s->count),
        static_cast<size_t>(s->element_size), compare);
}

void *ksstack_bsearch(const void *key, const ksstack *s, comparator compare) {
  return bsearch(key, s->data, static_cast<size_t>(s->count),
                 static_cast<size_t>(s->element_size), compare);
}

static int index_of(const void *element, const ksstack *s) {
  if (!element)
    return -1;
  return static_cast<int>((static_cast<const char *>(element) - s->data) /
                          s->element_size);
}

int ksstack_bsearch_index(const void *key, const ksstack *s,
                          comparator compare) {
  return index_of(ksstack_bsearch(key, s, compare), s);
}

int ksstack_lower_bound(const void *key, const ksstack *s, comparator compare) {
  int lo = -1;
  int hi = s->count;
  while (lo + 1 < hi) {
    const int mid = lo + (hi - lo) / 2;
    if (compare(element_at(s, mid), key) < 0)
      lo = mid;
    else
      hi = mid;
  }
  if (hi < s->count && compare(element_at(s, hi), key) == 0)
    return hi;
  return -1;
}

void *ksstack_insert_sorted(const void *element, ksstack *s,
                            comparator compare) {
  int lo = 0;
  int hi = s->count;
  while (hi - lo > scan_limit) {
    const int mid = lo + (hi - lo) / 2;
    const int r = compare(element, element_at(s, mid));
    if (r < 0)
      hi = mid;
    else
      lo = mid;
    if (r == 0)
      break;
  }
  while (lo < hi && compare(element, element_at(s, lo)) >= 0)
    lo++;
  return ksstack_insert_at(element, s, lo);
}

void *ksstack_insert_at(const void *element, ksstack *s, int index) {
  if (s->count >= s->capacity)
    grow(s);
  char *place = element_at(s, index);
  if (index < s->count)
    memmove(place + s->element_size, place, bytes_of(s, s->count - index));
  memcpy(place, element, bytes_of(s, 1));
  s->count++;
  return place;
}

ksstack *ksstack_trim(ksstack *s) {
  constexpr size_t worth = 512; // bytes
  const int kept = s->count > 0 ? s->count : 1;
  if (s->buffer != first_buffer(s) || bytes_of(s, s->capacity - kept) < worth)
    return s;
  const size_t bytes = ksstack_bytes(kept, s->element_size);
  s = static_cast<ksstack *>(xrealloc(s, bytes));
  s->capacity = kept;
  s->buffer = first_buffer(s);
  s->data = s->buffer + s->element_size;
  return s;
}

} // namespace kestro
