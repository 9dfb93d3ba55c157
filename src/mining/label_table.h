// Counters of the one-edge and two-edge patterns that occur, by their labels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/xmalloc.h"

namespace kestro {

// An edge seen from its end with the smaller label.
struct edge_key {
  int la, lb, e;
  bool operator==(const edge_key &) const = default;
};

// A path seen from its end with the smaller label (of equal ones, the smaller
// edge label): its ends, its centre, the edges at either end.
struct path_key {
  int va, vb, vc, ea, eb;
  bool operator==(const path_key &) const = default;
};

// What the dense tables of both kinds of patterns may take together, in bytes.
constexpr size_t dense_tables_limit = size_t{64} << 20;

// Whether a table for all combinations of nel edge labels and nvl vertex labels
// is dense: when it, and for paths the table of edges too, fit into limit
// bytes.
template <class Key> bool is_dense(int nel, int nvl, size_t limit);

// Counts by key.  Patterns are numbered as they are met, and a table from keys
// to numbers finds them: an array over all combinations of labels where that is
// small, a hash table otherwise, whose size follows what occurs.
template <class Key> class label_table {
public:
  struct entry {
    Key key;
    int count; // 0 when new
    int last;  // 0 when new
  };

  // For labels 0..nel-1 of edges and 0..nvl-1 of vertices.
  label_table(int nel, int nvl, size_t limit = dense_tables_limit);

  // The entry of a key, made when it is new; stays until the next new one.
  entry &at(const Key &key) {
    uint32_t &number = dense_ ? numbers_.get()[offset_of(key)] : slot_of(key);
    if (number)
      return entries_[number - 1];
    return add(key, number);
  }
  xvector<entry> &entries() { return entries_; } // in the order they were met

private:
  size_t offset_of(const edge_key &k) const {
    return (index(k.la) * nvl_ + index(k.lb)) * nel_ + index(k.e);
  }
  size_t offset_of(const path_key &k) const {
    const size_t labels =
        (index(k.va) * nvl_ + index(k.vb)) * nvl_ + index(k.vc);
    return (labels * nel_ + index(k.ea)) * nel_ + index(k.eb);
  }
  static size_t index(int label) { return static_cast<size_t>(label); }
  uint32_t &slot_of(const Key &key);
  entry &add(const Key &key, uint32_t &number);
  void set_numbers(size_t count);
  void enlarge();

  bool dense_;
  size_t nel_;
  size_t nvl_;
  xvector<entry> entries_;
  // Numbers, 1 and up, and 0 for none: by offset in a dense table, whose
  // untouched pages take no memory, otherwise in slots of which at most half
  // are in use.
  xptr<uint32_t> numbers_;
  size_t slots_ = 0; // a power of two; 0 when dense
};

using edge_table = label_table<edge_key>;
using path_table = label_table<path_key>;

} // namespace kestro
