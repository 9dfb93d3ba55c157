// Growable arrays: what the program does without.
//
// Removal by value bisects while more than eight elements are in question and
// then walks, as insertion does.

#include "reference/base/ksstack.h"

#include <cstddef>
#include <cstring>

#include "base/xmalloc.h"

namespace kestro {

// Range in which removal by value stops bisecting.
static constexpr int scan_limit = 8;

static char *element_at(const ksstack *s, int index) {
  return s->data + static_cast<ptrdiff_t>(index) * s->element_size;
}

void *ksstack_pop(ksstack *s) {
  return s->count ? ksstack_remove_at(s, s->count - 1) : nullptr;
}

void *ksstack_find(const void *key, const ksstack *s, comparator compare) {
  for (int i = 0; i < s->count; i++)
    if (compare(element_at(s, i), key) == 0)
      return element_at(s, i);
  return nullptr;
}

int ksstack_find_index(const void *key, const ksstack *s, comparator compare) {
  const void *element = ksstack_find(key, s, compare);
  return element
             ? static_cast<int>((static_cast<const char *>(element) - s->data) /
                                s->element_size)
             : -1;
}

void *ksstack_remove_sorted(const void *key, ksstack *s, comparator compare) {
  int lo = 0;
  int hi = s->count;
  while (hi - lo > scan_limit) {
    const int mid = lo + (hi - lo) / 2;
    if (compare(element_at(s, mid), key) > 0)
      hi = mid;
    else
      lo = mid;
  }
  for (int i = lo; i < hi; i++)
    if (compare(element_at(s, i), key) == 0)
      return ksstack_remove_at(s, i);
  return nullptr;
}

void *ksstack_release(ksstack *s, int *count) {
  *count = s->count;
  if (s->count == 0) {
    ksstack_free(s);
    return nullptr;
  }
  const size_t bytes =
      static_cast<size_t>(s->count) * static_cast<size_t>(s->element_size);
  void *array = xmalloc(bytes);
  memcpy(array, s->data, bytes);
  ksstack_free(s);
  return array;
}

} // namespace kestro
