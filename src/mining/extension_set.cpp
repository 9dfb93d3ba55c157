// Sets of extensions.
//
// Most joins give a graph that was built before: other automorphisms and other
// partners land the same edge in the same place.  Such a graph has exactly the
// same arrays and would register in the same way, so telling it here, before
// anything is built, changes nothing.

#include "mining/extension_set.h"

#include <cstdint>
#include <initializer_list>
#include <utility>

namespace kestro {

static constexpr extension free_place = {nullptr, -1, -1, -1, -1};

static size_t hash_extension(const extension &x) {
  uint64_t h = reinterpret_cast<uintptr_t>(x.pattern);
  for (const int field : {x.from, x.to, x.elabel, x.vlabel}) {
    h = (h ^ static_cast<uint32_t>(field)) * 0x9e3779b97f4a7c15;
    h ^= h >> 32;
  }
  return static_cast<size_t>(h);
}

// Where x is, or the free place where it belongs.
size_t extension_set::place_of(const extension &x) const {
  const size_t mask = table_.size() - 1; // the size is a power of two
  size_t i = hash_extension(x) & mask;
  while (table_[i].pattern && !(table_[i] == x))
    i = (i + 1) & mask;
  return i;
}

void extension_set::grow() {
  xvector<extension> old(table_.empty() ? 256 : 2 * table_.size(), free_place);
  std::swap(old, table_);
  for (const extension &x : old)
    if (x.pattern)
      table_[place_of(x)] = x;
}

bool extension_set::insert(const extension &x) {
  if (4 * count_ >= 3 * table_.size())
    grow();
  extension &place = table_[place_of(x)];
  if (place.pattern)
    return false;
  place = x;
  count_++;
  return true;
}

} // namespace kestro
