// Sets of numbers as bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestro {

// Writes the words that a and b have in common to out, which may be one of
// them, and returns how many bits are set there.  Counts with what the
// processor has, which is found out at the start.
int and_count(const uint64_t *a, const uint64_t *b, uint64_t *out,
              size_t words);
// The same on every processor, one bit count after another.
int and_count_plain(const uint64_t *a, const uint64_t *b, uint64_t *out,
                    size_t words);

} // namespace kestro
