// Words in a hash table.
#pragma once

#include <cstdint>

#include "base/open_table.h"

namespace kestro {

// A set of words other than 0, in eight bytes for each slot.
class word_set {
public:
  // Growing throws interrupted, and changes nothing, when stop says so.
  explicit word_set(const interruption *stop = nullptr) : table_(stop) {}

  // Adds w; false, and nothing is changed, when it is there already.
  bool insert(uint64_t w) {
    return table_.insert({w}, [&](const slot &s) { return s.word == w; });
  }
  // Whether w is there.
  bool contains(uint64_t w) const {
    return table_
        .look_up(slot{w}.hash(), [&](const slot &s) { return s.word == w; })
        .in_use();
  }
  // Tells that w will be inserted soon, which saves time then.
  void expect(uint64_t w) const { table_.expect(slot{w}.hash()); }

  // Whether the next insertion may make the table grow.
  bool is_full() const { return table_.is_full(); }
  // Takes out what keep(w) does not hold.
  template <class Keep> void keep_only(const Keep &keep) {
    table_.keep_only([&](const slot &s) { return keep(s.word); });
  }

private:
  struct slot {
    uint64_t word = 0; // 0: free

    bool in_use() const { return word != 0; }
    uint64_t hash() const { return mixed(0, word); }
  };

  open_table<slot> table_;
};

} // namespace kestro
