// Records brought near before they are read.
#pragma once

#include "mining/sg_set.h"

namespace kestro {

// How much of a record is read.
enum class record_part { head, graph, parents };

// Sends for that part of a record whose head is near.
inline void expect_rest(const subgraph *sg, record_part part) {
  constexpr ptrdiff_t line = 64;
  const char *at = reinterpret_cast<const char *>(sg + 1);
  const char *const end =
      part == record_part::parents
          ? sg->entries + static_cast<ptrdiff_t>(sg->parents) * sg->entry_bytes
          : sg->entries;
  for (; at < end; at += line)
    __builtin_prefetch(at);
}

// Sends for a record's head.
inline void expect_head(const subgraph *sg) {
  __builtin_prefetch(sg);
  __builtin_prefetch(reinterpret_cast<const char *>(sg + 1) - 1);
}

// A loop that reads n records, in order, calls this for each; at(i) is record
// i.  Records lie anywhere in memory, so reading them one after another would
// wait for each; sent for some time before, they come while others are read.
template <class RecordAt>
void expect_records(int n, RecordAt at, int i, record_part part) {
  constexpr int heads = 16; // ahead
  constexpr int rest = 6;
  if (i + heads < n)
    expect_head(at(i + heads));
  if (part != record_part::head && i + rest < n)
    expect_rest(at(i + rest), part);
}

// The same for a set.
inline void expect_records(const sg_set *set, int id, record_part part) {
  expect_records(
      sg_set_size(set), [set](int i) { return sg_set_get(set, i); }, id, part);
}

} // namespace kestro
