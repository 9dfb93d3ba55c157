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

// A loop that reads every record of a set, in order, calls this for each id.
// Records lie anywhere in memory, so reading them one after another would wait
// for each; sent for some time before, they come while others are read.
inline void expect_records(const sg_set *set, int id, record_part part) {
  constexpr int heads = 16; // ahead
  constexpr int rest = 6;
  if (id + heads < sg_set_size(set))
    expect_head(sg_set_get(set, id + heads));
  if (part != record_part::head && id + rest < sg_set_size(set))
    expect_rest(sg_set_get(set, id + rest), part);
}

} // namespace kestro
