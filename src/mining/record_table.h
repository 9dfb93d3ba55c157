// Records found again by their graphs.
#pragma once

#include <cstdint>

#include "base/open_table.h"
#include "mining/subgraph.h"

namespace kestro {

// Borrowed records in a hash table by key.
class record_table {
public:
  // Growing throws interrupted, and changes nothing, when stop says so.
  explicit record_table(const interruption *stop = nullptr) : table_(stop) {}

  // The record with an equal graph, or null.
  const subgraph *find(const subgraph *sg) const;
  // sg's graph is in canonical form and not in yet.
  void insert(const subgraph *sg);
  void clear() { table_.clear(); }
  int size() const { return static_cast<int>(table_.size()); }

private:
  struct slot {
    uint32_t key = 0;             // of the record's graph
    const subgraph *sg = nullptr; // null for a free slot

    bool in_use() const { return sg != nullptr; }
    uint64_t hash() const { return mixed(0, key); }
    bool holds(const subgraph *other) const;
  };

  open_table<slot> table_;
};

} // namespace kestro
