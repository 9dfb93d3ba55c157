// Counters of the patterns of one and of two edges that occur, by their labels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/open_table.h"
#include "base/xmalloc.h"
#include "graph/graph_list.h"

namespace kestro {

// An edge seen from one of its ends.
struct edge_key {
  int from, to, e;
  bool operator==(const edge_key &) const = default;
};

// A path of two edges by the numbers of its centre's label and of its arms
// (mining/path_arms.h), a <= b.
struct path_key {
  int centre, a, b;
  bool operator==(const path_key &) const = default;
};

// Where each of some keys has its place in an array.
template <class Key> struct key_space;

// All edges with labels 0..nvl-1 of vertices and 0..nel-1 of edges.
template <> struct key_space<edge_key> {
  int nel, nvl;
  // How many places there are, SIZE_MAX when they cannot be counted.
  size_t places() const;
  size_t place(const edge_key &k) const {
    const auto labels = static_cast<size_t>(nvl);
    return (static_cast<size_t>(k.from) * labels + static_cast<size_t>(k.to)) *
               static_cast<size_t>(nel) +
           static_cast<size_t>(k.e);
  }
};

// All pairs of arms with one centre; first[c] is the place of the first one of
// centre c, first[centres] the number of places.
template <> struct key_space<path_key> {
  const size_t *first;
  int centres;
  size_t places() const { return first[centres]; }
  size_t place(const path_key &k) const {
    const auto b = static_cast<size_t>(k.b);
    return first[k.centre] + b * (b + 1) / 2 + static_cast<size_t>(k.a);
  }
};

// What an array of counters may take, in bytes, when these transactions are
// counted in it: half of what they take, so that clearing it costs little
// beside reading them, and at most 32 MiB.
size_t counters_limit(const graph_list *transactions);

// Counts transactions by key: in an array over the whole space where that takes
// at most limit bytes, otherwise in a hash table, whose size follows what
// occurs.
template <class Key> class label_table {
public:
  using space = key_space<Key>;
  label_table(const space &keys, size_t limit);

  // Counts a transaction for a key unless it is the last one counted for it.
  void count_once(const Key &key, int tid) {
    counter &c = counter_of(key);
    if (c.last == tid + 1)
      return;
    if (c.last == 0)
      keys_.push_back(key);
    c.last = tid + 1;
    c.number++;
  }
  // The keys counted, in the order they were met.
  const xvector<Key> &keys() const { return keys_; }

  // The count of a key, or what set_number has put in its place; 0 for a key
  // that was not met.
  int number_of(const Key &key) const {
    const counter *c = find(key);
    return c ? c->number : 0;
  }
  // Gives a key another number, and has number_once begin anew.
  void set_number(const Key &key, int number) {
    counter_of(key) = {number, never};
  }
  // The same as number_of for the first time with that tid, 0 at once again.
  // The key has been met.
  int number_once(const Key &key, int tid) {
    counter &c = counter_of(key);
    if (c.number == 0 || c.last == tid + 1)
      return 0;
    c.last = tid + 1;
    return c.number;
  }

  bool is_dense() const { return dense_ != nullptr; }

private:
  static constexpr int never = -1;

  struct counter {
    int number;
    int last; // TID + 1 of the transaction counted last, 0 for a key not met
  };

  counter &counter_of(const Key &key) {
    return dense_ ? dense_.get()[space_.place(key)] : sparse_counter_of(key);
  }
  const counter *find(const Key &key) const {
    return dense_ ? &dense_.get()[space_.place(key)] : find_sparse(key);
  }
  counter &sparse_counter_of(const Key &key);
  const counter *find_sparse(const Key &key) const;

  struct slot {
    uint32_t upper = 0;  // half of the key's hash, which spares most looks at
                         // keys and numbers more slots than there can be
    uint32_t number = 0; // position in sparse_ + 1, 0 in a free slot

    bool in_use() const { return number != 0; }
    uint64_t hash() const { return uint64_t{upper} << 32; }
  };
  struct sparse_counter {
    Key key;
    counter value;
  };
  slot slot_of(const Key &key) const;

  space space_;
  xvector<Key> keys_;
  // A counter per place; pages that nothing touches take no memory.  Null when
  // the table is sparse.
  xptr<counter> dense_;
  xvector<sparse_counter> sparse_; // in the order they were asked for
  open_table<slot> positions_;
};

using edge_table = label_table<edge_key>;
using path_table = label_table<path_key>;

} // namespace kestro
