// Counting bits.
//
// A build for all processors of a family must not use an instruction that some
// of them lack, and without one a count of bits is a call of several steps.  So
// the loop is compiled twice where the compiler can, and the start of the
// program chooses.  A plain variable holds the choice: it needs no help of the
// loader, and no sanitizer minds it.

#include "base/bit_sets.h"

#include <bit>

namespace kestro {

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__POPCNT__)
#define KESTRO_CHOOSES_POPCNT 1
#endif

int and_count_plain(const uint64_t *a, const uint64_t *b, uint64_t *out,
                    size_t words) {
  int count = 0;
  for (size_t i = 0; i < words; i++) {
    out[i] = a[i] & b[i];
    count += std::popcount(out[i]);
  }
  return count;
}

#ifdef KESTRO_CHOOSES_POPCNT

// The same with the instruction, which no inlined call would use.
[[gnu::target("popcnt")]] static int and_count_popcnt(const uint64_t *a,
                                                      const uint64_t *b,
                                                      uint64_t *out,
                                                      size_t words) {
  int count = 0;
  for (size_t i = 0; i < words; i++) {
    out[i] = a[i] & b[i];
    count += __builtin_popcountll(out[i]);
  }
  return count;
}

static const bool has_popcnt = [] {
  __builtin_cpu_init();
  return __builtin_cpu_supports("popcnt") != 0;
}();

int and_count(const uint64_t *a, const uint64_t *b, uint64_t *out,
              size_t words) {
  return has_popcnt ? and_count_popcnt(a, b, out, words)
                    : and_count_plain(a, b, out, words);
}

#else

int and_count(const uint64_t *a, const uint64_t *b, uint64_t *out,
              size_t words) {
  return and_count_plain(a, b, out, words);
}

#endif

} // namespace kestro
