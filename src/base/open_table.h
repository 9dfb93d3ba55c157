// The hash table of everything that is found by hashing.
//
// Open addressing with linear probing: what is looked for is in the first slots
// from its hash on, without a free one between, so that most look-ups touch one
// line of the cache.  The order of the slots shows nowhere, since nothing lists
// them.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "base/interruption.h"
#include "base/xmalloc.h"

namespace kestro {

// The hash of the words behind hash, 0 at first, and of one more.  A product
// carries each bit upwards only: the upper half of it is the part that depends
// on most, so it comes low again before the next one, and chooses the slot.
inline uint64_t mixed(uint64_t hash, uint64_t word) {
  return (std::rotl(hash, 32) ^ word) * 0x9e3779b97f4a7c15;
}

// A power of two of slots, at most three quarters of them in use.  A Slot is
// small and copied freely; one made by default is free, and it has
//   bool in_use() const;
//   uint64_t hash() const; // of what it holds, made by mixed()
// What a look-up means by equal comes with it: same(slot), asked of slots in
// use.
template <class Slot> class open_table {
public:
  // Growing throws interrupted, and changes nothing, when stop says so; where
  // memory ends, all is as it was too.
  explicit open_table(const interruption *stop = nullptr)
      : slots_(smallest), stop_(stop) {}

  // The slot in use that is the same, or the free one where it belongs.  Valid
  // until the next insertion.
  template <class Same>
  const Slot &look_up(uint64_t hash, const Same &same) const {
    return slots_[place_of(hash, same)];
  }

  // Has the memory where a look-up for hash begins brought near.  Of several
  // look-ups, told of beforehand, the waiting times overlap.
  void expect(uint64_t hash) const {
    __builtin_prefetch(slots_.data() + (hash >> shift_));
  }

  // Whether the next insertion may make the table grow.
  bool is_full() const { return count_ == limit_of(slots_.size()); }

  // Takes out what keep(slot) does not hold, and makes room for a quarter
  // more than is left.
  template <class Keep> void keep_only(const Keep &keep) {
    const auto left = static_cast<size_t>(
        std::count_if(slots_.begin(), slots_.end(),
                      [&](const Slot &s) { return s.in_use() && keep(s); }));
    resize(slots_for(left + left / 4), keep);
    count_ = left;
  }

  // Adds added; false, and nothing is changed, when the same is in already.
  template <class Same> bool insert(const Slot &added, const Same &same) {
    if (is_full())
      resize(2 * slots_.size());
    Slot &s = slots_[place_of(added.hash(), same)];
    if (s.in_use())
      return false;
    s = added;
    count_++;
    return true;
  }

  // Makes room for n in all at once.
  void reserve(size_t n) {
    if (n > limit_of(slots_.size()))
      resize(slots_for(n));
  }

  // Takes everything out and makes room for n.  Keeps the memory.
  void clear(size_t n = 0) {
    slots_.assign(slots_for(n), Slot());
    shift_ = shift_of(slots_.size());
    count_ = 0;
  }

  size_t size() const { return count_; }

private:
  static constexpr size_t smallest = 64;

  static size_t limit_of(size_t slots) { return slots / 4 * 3; }
  static size_t slots_for(size_t n) {
    return std::bit_ceil(std::max(smallest, n + n / 3 + 1));
  }
  // What leaves the bits of a hash that number so many slots.
  static int shift_of(size_t slots) { return 64 - std::countr_zero(slots); }

  template <class Same> size_t place_of(uint64_t hash, const Same &same) const {
    const Slot *const slots = slots_.data();
    const size_t mask = slots_.size() - 1;
    size_t i = hash >> shift_;
    while (slots[i].in_use() && !same(slots[i]))
      i = (i + 1) & mask;
    return i;
  }

  // Large tables take a while: they are laid out and filled piece by piece.
  void resize(size_t size) {
    resize(size, [](const Slot &) { return true; });
  }
  template <class Keep> void resize(size_t size, const Keep &keep) {
    static constexpr size_t piece = 16384;
    xvector<Slot> larger;
    larger.reserve(size);
    while (larger.size() < size) {
      larger.resize(std::min(size, larger.size() + piece));
      check_interruption(stop_);
    }
    const int shift = shift_of(size);
    for (size_t i = 0; i < slots_.size();) {
      for (const size_t end = std::min(slots_.size(), i + piece); i < end; i++)
        if (slots_[i].in_use() && keep(slots_[i]))
          put(slots_[i], shift, &larger);
      check_interruption(stop_);
    }
    slots_.swap(larger);
    shift_ = shift;
  }

  static void put(const Slot &s, int shift, xvector<Slot> *slots) {
    const size_t mask = slots->size() - 1;
    size_t i = s.hash() >> shift;
    while ((*slots)[i].in_use())
      i = (i + 1) & mask;
    (*slots)[i] = s;
  }

  xvector<Slot> slots_;
  int shift_ = shift_of(smallest);
  size_t count_ = 0; // slots in use
  const interruption *stop_;
};

} // namespace kestro
