// Growable arrays of ints.
//
// Same narrowing searches as ksstack: bisect while more than eight elements are
// in question, then walk.

#include "reference/base/ksistack.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

// Range in which the sorted operations stop bisecting.
static constexpr int scan_limit = 8;

static size_t bytes_of(int count) {
  return static_cast<size_t>(count) * sizeof(int);
}

ksistack *ksistack_new(int capacity) {
  assert(capacity > 0);
  xptr<ksistack> s(static_cast<ksistack *>(xmalloc(sizeof(ksistack))));
  s->capacity = capacity;
  s->count = 0;
  s->data = static_cast<int *>(xmalloc(bytes_of(capacity)));
  return s.release();
}

void ksistack_free(ksistack *s) {
  if (!s)
    return;
  xfree(s->data);
  xfree(s);
}

static void grow(ksistack *s) {
  if (s->capacity > INT_MAX / 2)
    die_out_of_memory();
  s->data = static_cast<int *>(xrealloc(s->data, 2 * bytes_of(s->capacity)));
  s->capacity *= 2;
}

void ksistack_push(int value, ksistack *s) {
  ksistack_insert_at(value, s, s->count);
}

int ksistack_pop(ksistack *s) {
  if (s->count == 0)
    return 0;
  const int value = s->data[--s->count];
  s->data[s->count] = 0;
  return value;
}

int ksistack_top(const ksistack *s) {
  return s->count ? s->data[s->count - 1] : 0;
}

int ksistack_at(const ksistack *s, int index) {
  if (index >= s->count)
    die("stack.c", "invalid index\n");
  return s->data[index];
}

void ksistack_sort(ksistack *s, comparator compare) {
  qsort(s->data, static_cast<size_t>(s->count), sizeof(int), compare);
}

int *ksistack_bsearch(int value, const ksistack *s, comparator compare) {
  return static_cast<int *>(bsearch(
      &value, s->data, static_cast<size_t>(s->count), sizeof(int), compare));
}

static int index_of(const int *element, const ksistack *s) {
  return element ? static_cast<int>(element - s->data) : -1;
}

int ksistack_bsearch_index(int value, const ksistack *s, comparator compare) {
  return index_of(ksistack_bsearch(value, s, compare), s);
}

int *ksistack_find(int value, const ksistack *s, comparator compare) {
  for (int i = 0; i < s->count; i++)
    if (compare(&s->data[i], &value) == 0)
      return &s->data[i];
  return nullptr;
}

int ksistack_find_index(int value, const ksistack *s, comparator compare) {
  return index_of(ksistack_find(value, s, compare), s);
}

int ksistack_lower_bound(int value, const ksistack *s, comparator compare) {
  int lo = -1;
  int hi = s->count;
  while (lo + 1 < hi) {
    const int mid = lo + (hi - lo) / 2;
    if (compare(&s->data[mid], &value) < 0)
      lo = mid;
    else
      hi = mid;
  }
  if (hi < s->count && compare(&s->data[hi], &value) == 0)
    return hi;
  return -1;
}

int ksistack_find_last(int value, const ksistack *s, comparator compare) {
  int lo = 0;
  int hi = s->count;
  while (hi - lo > scan_limit) {
    const int mid = lo + (hi - lo) / 2;
    const int r = compare(&s->data[mid], &value);
    if (r > 0)
      hi = mid;
    else
      lo = mid;
    if (r == 0)
      break;
  }
  int found = -1;
  for (int i = lo; i < s->count; i++) {
    const int r = compare(&s->data[i], &value);
    if (r > 0)
      break;
    if (r == 0)
      found = i;
  }
  return found;
}

void ksistack_insert_sorted(int value, ksistack *s, comparator compare) {
  int lo = 0;
  int hi = s->count;
  while (hi - lo > scan_limit) {
    const int mid = lo + (hi - lo) / 2;
    const int r = compare(&value, &s->data[mid]);
    if (r < 0)
      hi = mid;
    else
      lo = mid;
    if (r == 0)
      break;
  }
  while (lo < hi && compare(&value, &s->data[lo]) >= 0)
    lo++;
  ksistack_insert_at(value, s, lo);
}

int ksistack_remove_sorted(int value, ksistack *s, comparator compare) {
  int lo = 0;
  int hi = s->count;
  while (hi - lo > scan_limit) {
    const int mid = lo + (hi - lo) / 2;
    if (compare(&s->data[mid], &value) > 0)
      hi = mid;
    else
      lo = mid;
  }
  for (int i = lo; i < hi; i++) {
    if (compare(&s->data[i], &value) == 0) {
      const int removed = ksistack_remove_at(s, i);
      s->data[s->count] = removed;
      return removed;
    }
  }
  return 0;
}

void ksistack_insert_at(int value, ksistack *s, int index) {
  if (s->count >= s->capacity)
    grow(s);
  memmove(s->data + index + 1, s->data + index, bytes_of(s->count - index));
  s->data[index] = value;
  s->count++;
}

int ksistack_remove_at(ksistack *s, int index) {
  const int value = s->data[index];
  memmove(s->data + index, s->data + index + 1, bytes_of(s->count - index - 1));
  s->count--;
  return value;
}

} // namespace kestro
