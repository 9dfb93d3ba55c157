// Extensions of one level as words, of half their size.
#pragma once

#include <bit>
#include <cassert>
#include <cstdint>

#include "mining/extension.h"

namespace kestro {

// How an extension lies in a word: from the highest bits on, its pattern, from,
// to, elabel and vlabel, each in as many bits as the level needs.  The labels
// share what is left, so that only very large ones need more.
class extension_packing {
public:
  // For a level of that many patterns, of at most that many vertices.
  extension_packing(int patterns, int vertices)
      : pattern_at_(64 - width(patterns)),
        from_at_(pattern_at_ - width(vertices)),
        to_at_(from_at_ - width(vertices)), label_bits_(to_at_ / 2) {
    assert(to_at_ >= 0);
  }

  // The word of x, an extension of a pattern of the level: never 0 and equal
  // only for equal ones.  0 when x does not fit.
  uint64_t word_of(const extension &x) const {
    const uint64_t pattern = static_cast<uint32_t>(x.pattern + 1);
    const uint64_t from = static_cast<uint16_t>(x.from);
    const uint64_t to = static_cast<uint16_t>(x.to + 1);
    const uint64_t elabel = static_cast<uint32_t>(x.elabel);
    const uint64_t vlabel = static_cast<uint32_t>(x.vlabel) + uint32_t{1};
    if ((from | to) >> (from_at_ - to_at_) || (elabel | vlabel) >> label_bits_)
      return 0;
    return pattern << pattern_at_ | from << from_at_ | to << to_at_ |
           elabel << label_bits_ | vlabel;
  }

  // The pattern of an extension with that word.
  int pattern_of(uint64_t word) const {
    return static_cast<int>(word >> pattern_at_) - 1;
  }

private:
  // Bits for the numbers from 0 to n.
  static int width(int n) {
    return static_cast<int>(std::bit_width(static_cast<unsigned>(n)));
  }

  // Where a number's lowest bit lies; the vlabel's is bit 0.
  int pattern_at_;
  int from_at_;
  int to_at_;
  int label_bits_; // of each label
};

} // namespace kestro
