// Records found again by their graphs.
#pragma once

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "mining/subgraph.h"

namespace kestro {

// Borrowed records in a hash table by key, with open addressing, at most three
// quarters full.
class record_table {
public:
  // Growing throws interrupted, and changes nothing, when stop says so.
  explicit record_table(const interruption *stop = nullptr) : stop_(stop) {}

  // The record with an equal graph, or null.
  const subgraph *find(const subgraph *sg) const;
  // sg's graph is in canonical form and not in yet.
  void insert(const subgraph *sg);
  void clear();
  int size() const { return count_; }

private:
  struct place {
    uint32_t key = 0;             // of the record's graph
    const subgraph *sg = nullptr; // null for a free place
  };

  size_t place_of(const subgraph *sg) const;
  void grow();

  xvector<place> places_; // a power of two, or none
  int count_ = 0;
  const interruption *stop_;
};

} // namespace kestro
