// Extensions: a pattern and where an edge is built onto it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/open_table.h"
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

// A vertex's number in the type that extensions store.  A larger one ends the
// run as exhausted memory does; the time for so many levels ends it long
// before.
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

inline uint64_t hash_of(const extension &x) {
  const uint64_t place = uint64_t{static_cast<uint32_t>(x.pattern)} << 32 |
                         uint32_t{static_cast<uint16_t>(x.from)} << 16 |
                         static_cast<uint16_t>(x.to);
  const uint64_t labels = uint64_t{static_cast<uint32_t>(x.elabel)} << 32 |
                          static_cast<uint32_t>(x.vlabel);
  return mixed(mixed(0, place), labels);
}

// Extensions in a hash table.
class extension_set {
public:
  // Growing throws interrupted, and changes nothing, when stop says so.
  explicit extension_set(const interruption *stop = nullptr) : table_(stop) {}

  // Takes everything out.
  void clear() { table_.clear(); }

  // Adds x; false, and nothing is changed, when it is there already.
  bool insert(const extension &x) {
    return table_.insert({x}, [&](const slot &s) { return s.key == x; });
  }
  // Whether x is there.
  bool contains(const extension &x) const {
    return table_.look_up(hash_of(x), [&](const slot &s) { return s.key == x; })
        .in_use();
  }

  // Whether the next insertion may make the table grow.
  bool is_full() const { return table_.is_full(); }

  // Takes out what keep(x) does not hold.
  template <class Keep> void keep_only(const Keep &keep) {
    table_.keep_only([&](const slot &s) { return keep(s.key); });
  }

  // Tells that x will be inserted or looked for soon, which saves time then.
  void expect(const extension &x) const { table_.expect(hash_of(x)); }

private:
  struct slot {
    extension key; // pattern -1: free

    bool in_use() const { return key.pattern != -1; }
    uint64_t hash() const { return hash_of(key); }
  };

  open_table<slot> table_;
};

} // namespace kestro
