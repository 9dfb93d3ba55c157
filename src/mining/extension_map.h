// Tables keyed by extensions: a pattern and where an edge is built onto it.
#pragma once

#include <algorithm>
#include <cstdint>

#include "base/interruption.h"
#include "base/xmalloc.h"

namespace kestro {

// A pattern plus one edge.  There are many of them, hence the short vertices.
struct extension {
  int pattern = -1;  // its id in its level
  int16_t from = -1; // its vertex at which the edge lands
  int16_t to = -1; // its vertex at the other end, above from; -1 for a new one
  int elabel = -1;
  int vlabel = -1; // of the new vertex, -1 for none
  bool operator==(const extension &) const = default;
};

// A vertex's number in the type that extensions store.  A pattern with a larger
// number would be of a level that needs far more memory than any machine has,
// so this dies as exhausted memory does.
inline int16_t short_vertex(int u) {
  if (u > INT16_MAX)
    die_out_of_memory();
  return static_cast<int16_t>(u);
}

// The extension by an edge between two vertices of the pattern, in any order.
inline extension closing_extension(int pattern, int u, int w, int elabel) {
  return {pattern, short_vertex(u < w ? u : w), short_vertex(u < w ? w : u),
          elabel, -1};
}

// The extension by an edge to a new vertex.
inline extension pendant_extension(int pattern, int u, int elabel, int vlabel) {
  return {pattern, short_vertex(u), -1, elabel, vlabel};
}

// The extension whose edge is the image of x's under a permutation of the
// pattern's vertices.
inline extension image_of(const extension &x, const int *perm) {
  return x.to == -1
             ? pendant_extension(x.pattern, perm[x.from], x.elabel, x.vlabel)
             : closing_extension(x.pattern, perm[x.from], perm[x.to], x.elabel);
}

inline uint32_t hash_extension(const extension &x) {
  uint64_t h = static_cast<uint32_t>(x.pattern);
  h = h << 32 ^ static_cast<uint32_t>(x.from) << 16 ^
      static_cast<uint16_t>(x.to);
  h = (h ^ static_cast<uint64_t>(static_cast<uint32_t>(x.elabel)) << 20) *
      0x9e3779b97f4a7c15;
  h = (h ^ h >> 32 ^ static_cast<uint32_t>(x.vlabel)) * 0xc2b2ae3d27d4eb4f;
  return static_cast<uint32_t>(h >> 32);
}

// A map in a table with open addressing, which is at most four fifths full and
// grows by half.
template <class Value> class extension_map {
public:
  // Growing throws interrupted, and changes nothing, when stop says so.
  explicit extension_map(const interruption *stop = nullptr) : stop_(stop) {}

  // Makes room for n extensions at once.
  void reserve(size_t n) {
    if (5 * n >= 4 * table_.size())
      resize(n + n / 4 + smallest);
  }

  // Adds x; false, and nothing is changed, when it is there already.
  bool insert(const extension &x, const Value &value = {}) {
    if (5 * count_ >= 4 * table_.size())
      resize(table_.size() + table_.size() / 2 + smallest);
    place &p = table_[place_of(x, table_)];
    if (p.key.pattern != -1)
      return false;
    p = {x, value};
    count_++;
    return true;
  }

  // x's value, null when it is not there.
  const Value *find(const extension &x) const {
    if (count_ == 0)
      return nullptr;
    const place &p = table_[place_of(x, table_)];
    return p.key.pattern == -1 ? nullptr : &p.value;
  }

private:
  static constexpr size_t smallest = 16; // so that some place is always free

  struct place {
    extension key; // pattern -1: free
    [[no_unique_address]] Value value = {};
  };

  // Where x is, or the free place where it belongs.
  static size_t place_of(const extension &x, const xvector<place> &table) {
    // The search starts at the hash, scaled from 2^32 to the places.
    size_t i = hash_extension(x) * table.size() >> 32;
    while (table[i].key.pattern != -1 && !(table[i].key == x))
      i = i + 1 < table.size() ? i + 1 : 0;
    return i;
  }

  // Large tables take a while: they are laid out and filled piece by piece.
  void resize(size_t places) {
    static constexpr size_t piece = 16384;
    xvector<place> larger;
    larger.reserve(places);
    while (larger.size() < places) {
      larger.resize(std::min(places, larger.size() + piece));
      check_interruption(stop_);
    }
    for (size_t i = 0; i < table_.size();) {
      for (const size_t end = std::min(table_.size(), i + piece); i < end; i++)
        if (table_[i].key.pattern != -1)
          larger[place_of(table_[i].key, larger)] = table_[i];
      check_interruption(stop_);
    }
    table_.swap(larger);
  }

  const interruption *stop_;
  xvector<place> table_;
  size_t count_ = 0;
};

struct no_value {};
using extension_set = extension_map<no_value>;

} // namespace kestro
