// Further services of growable arrays: the last element, searches from the
// front, removal by value, the elements as a plain array.
#pragma once

#include "base/comparators.h"
#include "base/ksstack.h"

namespace kestro {

// Removes the last element and returns the scratch slot; null when empty.
void *ksstack_pop(ksstack *s);

// First equal element from index 0, with compare(element, key).
void *ksstack_find(const void *key, const ksstack *s, comparator compare);
int ksstack_find_index(const void *key, const ksstack *s, comparator compare);

// Removes an equal element, with compare(element, key); returns the scratch
// slot, or null when absent.
void *ksstack_remove_sorted(const void *key, ksstack *s, comparator compare);

// Ends the stack and hands over its elements as an array of *count, to be
// freed with xfree; null when empty.
void *ksstack_release(ksstack *s, int *count);

} // namespace kestro
