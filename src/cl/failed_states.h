// A bounded memory of what has failed.
#pragma once

#include <cstdint>

#include "base/interruption.h"
#include "base/open_table.h"
#include "base/xmalloc.h"

namespace kestro {

// A set of words, sequences of numbers.  It takes no more of them when it has
// come to 48 MB, nor ever takes more than 64 MB.
class failed_states {
public:
  using word = xvector<uint16_t>;

  explicit failed_states(const interruption *stop = nullptr)
      : table_(stop), stop_(stop) {}

  bool has(const word &w) const;
  void add(const word &w);
  // Takes all out; keeps a megabyte or so at most.
  void clear();

private:
  // A word lies in numbers_ behind its length, which is at first - 1.
  struct slot {
    bool in_use() const { return first != 0; }
    uint64_t hash() const { return hashed; }
    uint64_t hashed = 0;
    size_t first = 0;
  };
  bool is(const slot &s, const word &w) const;

  open_table<slot> table_;
  xvector<uint16_t> numbers_;
  const interruption *stop_;
};

} // namespace kestro
