// Allocation that never returns failure.
//
// Every block of the program comes from here, so exhausted memory has one
// message and one way out: a fatal_error that unwinds to main().

#include "base/xmalloc.h"

#include "base/error.h"

namespace kestro {

static const char not_enough_memory[] = "not enough memory";

void die_out_of_memory(int line) {
  throw fatal_error(place("xmalloc.c", line), not_enough_memory);
}

void *xmalloc(size_t size) {
  void *address = malloc(size);
  if (!address)
    die_out_of_memory();
  return address;
}

void *xcalloc(size_t count, size_t size) {
  void *address = calloc(count, size);
  if (!address)
    die_out_of_memory();
  return address;
}

void *xrealloc(void *address, size_t size) {
  if (size == 0) {
    free(address);
    return nullptr;
  }
  void *moved = realloc(address, size);
  if (!moved)
    die_out_of_memory();
  return moved;
}

void xfree(void *address) { free(address); }

} // namespace kestro
