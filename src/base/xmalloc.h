// Memory that is never null: allocation either succeeds or ends the run with
// "xmalloc.c:LINE: not enough memory".
#pragma once

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vector>

namespace kestro {

// Blocks of size bytes, as malloc, calloc (zero-filled) and realloc give them.
// xrealloc with size 0 frees the block and returns null.
void *xmalloc(size_t size);
void *xcalloc(size_t count, size_t size);
void *xrealloc(void *address, size_t size);
void xfree(void *address);

// Throws the fatal_error of exhausted memory.  For sizes that no allocation
// could meet, so that they need not be tried.
[[noreturn]] void die_out_of_memory(int line = __builtin_LINE());

// A number of things in memory as an int.  More of them than an int counts end
// the run as exhausted memory does.
inline int int_count(size_t n, int line = __builtin_LINE()) {
  if (n > INT_MAX)
    die_out_of_memory(line);
  return static_cast<int>(n);
}

struct xfree_deleter {
  void operator()(void *address) const { xfree(address); }
};

// Owner of one block of T.
template <class T> using xptr = std::unique_ptr<T, xfree_deleter>;

// Lets standard containers take their memory from xmalloc.
template <class T> struct xallocator {
  using value_type = T;
  xallocator() = default;
  template <class U> xallocator(const xallocator<U> &) {}
  T *allocate(size_t count) {
    if (count > static_cast<size_t>(-1) / sizeof(T))
      die_out_of_memory();
    return static_cast<T *>(xmalloc(count * sizeof(T)));
  }
  void deallocate(T *address, size_t) { xfree(address); }
  bool operator==(const xallocator &) const { return true; }
};

// A vector that dies instead of throwing std::bad_alloc.
template <class T> using xvector = std::vector<T, xallocator<T>>;

} // namespace kestro
