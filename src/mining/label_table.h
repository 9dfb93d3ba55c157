// Counters of the one-edge and two-edge patterns that occur, by their labels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/open_table.h"
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

// Counts transactions by key: in an array over all combinations of labels where
// that is small, otherwise in a hash table, whose size follows what occurs.
template <class Key> class label_table {
public:
  // For labels 0..nel-1 of edges and 0..nvl-1 of vertices.
  label_table(int nel, int nvl, size_t limit = dense_tables_limit);

  // Counts a transaction for a key unless it is the last one counted for it.
  void count_once(const Key &key, int tid) {
    counter &c = counter_of(key);
    if (c.last == tid + 1)
      return;
    if (c.last == 0)
      keys_.push_back(key);
    c.last = tid + 1;
    c.count++;
  }
  // The keys counted, in the order they were met.
  const xvector<Key> &keys() const { return keys_; }
  // The count of a key that was counted; it may be put to other use.
  int &count_of(const Key &key) { return counter_of(key).count; }

private:
  struct counter {
    int count;
    int last; // TID + 1 of the transaction counted last, 0 for none
  };

  counter &counter_of(const Key &key) {
    return dense_ ? dense_.get()[offset_of(key)] : sparse_counter_of(key);
  }
  size_t offset_of(const edge_key &k) const {
    return (index(k.la) * nvl_ + index(k.lb)) * nel_ + index(k.e);
  }
  size_t offset_of(const path_key &k) const {
    const size_t labels =
        (index(k.va) * nvl_ + index(k.vb)) * nvl_ + index(k.vc);
    return (labels * nel_ + index(k.ea)) * nel_ + index(k.eb);
  }
  static size_t index(int label) { return static_cast<size_t>(label); }
  counter &sparse_counter_of(const Key &key);

  struct slot {
    uint32_t upper = 0;  // half of the key's hash, which spares most looks at
                         // keys and numbers more slots than there can be
    uint32_t number = 0; // position in keys_ + 1, 0 in a free slot

    bool in_use() const { return number != 0; }
    uint64_t hash() const { return uint64_t{upper} << 32; }
  };

  size_t nel_;
  size_t nvl_;
  xvector<Key> keys_;
  // A counter per combination; pages that nothing touches take no memory.
  // Null when the table is sparse.
  xptr<counter> dense_;
  // By position in keys_, and where each key is.
  xvector<counter> sparse_;
  open_table<slot> positions_;
};

using edge_table = label_table<edge_key>;
using path_table = label_table<path_key>;

} // namespace kestro
