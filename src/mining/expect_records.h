// Records brought near before a loop reads them.
#pragma once

#include "mining/sg_set.h"

namespace kestro {

// A loop that reads every record of a set, in order, calls this for each id.
// Records lie anywhere in memory, so reading them one after another would wait
// for each; sent for some time before, they come while others are read.
// with_parents: not only graphs are read.
inline void expect_records(const sg_set *set, int id, bool with_parents) {
  constexpr int heads = 16; // ahead
  constexpr int rest = 6;
  constexpr ptrdiff_t line = 64;
  if (id + heads < sg_set_size(set))
    __builtin_prefetch(&sg_set_get(set, id + heads)->entries);
  if (id + rest >= sg_set_size(set))
    return;
  const subgraph *sg = sg_set_get(set, id + rest);
  const char *at = reinterpret_cast<const char *>(sg);
  const char *const end =
      with_parents
          ? sg->entries + static_cast<ptrdiff_t>(sg->parents) * sg->entry_bytes
          : sg->entries;
  for (; at < end; at += line)
    __builtin_prefetch(at);
}

} // namespace kestro
