// One pattern or candidate: its graph and what ties it to the levels below and
// above and to the transactions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/arena.h"
#include "base/ksstack.h"
#include "graph/graph.h"

namespace kestro {

// A way to reach a pattern from one of its parents: the edge u-v of the pattern
// that the parent lacks, and how the rest of the pattern lies in the parent.
//
// The map to the parent follows in the same memory, a byte for each vertex
// where that suffices: these maps are a good part of what a pattern takes.
struct sg_parent {
  int pid;   // the parent's id in the previous level
  int16_t u; // u <= v
  int16_t v;
  int16_t vs; // vertices of the pattern

  // The parent's vertex that vertex i of the pattern is, -1 for one that the
  // parent lacks, too.
  int image(int i) const {
    return has_bytes() ? map<int8_t>()[i] : map<int16_t>()[i];
  }
  void set_image(int i, int to) {
    if (has_bytes())
      map<int8_t>()[i] = static_cast<int8_t>(to);
    else
      map<int16_t>()[i] = static_cast<int16_t>(to);
  }

  // The map itself, for loops that know its type: that of bytes, or not.
  bool has_bytes() const { return vs <= INT8_MAX; }
  template <class Image> const Image *map() const {
    return reinterpret_cast<const Image *>(
        reinterpret_cast<const char *>(this) + head_bytes);
  }
  template <class Image> Image *map() {
    return reinterpret_cast<Image *>(reinterpret_cast<char *>(this) +
                                     head_bytes);
  }

  // Bytes of the map of a pattern with n vertices.
  static constexpr size_t map_bytes(int n) {
    return static_cast<size_t>(n) *
           (n <= INT8_MAX ? sizeof(int8_t) : sizeof(int16_t));
  }
  // Bytes of an entry before its map.
  static constexpr size_t head_bytes = sizeof(int) + 3 * sizeof(int16_t);
};

// Patterns have at most as many vertices; a larger one ends the run as
// exhausted memory does.  The time for so many levels ends it long before.
inline constexpr int parent_max_vertices = INT16_MAX;

// Bytes of a parent entry of a pattern with vs vertices.
inline size_t sg_parent_bytes(int vs) {
  constexpr size_t unit = alignof(sg_parent);
  const size_t bytes = sg_parent::head_bytes + sg_parent::map_bytes(vs);
  return std::max(sizeof(sg_parent), (bytes + unit - 1) / unit * unit);
}

// Header, followed in the same block by the graph and room for the parents.
//
// The id sets are ascending and without repeats; an id is a position in the
// sorted set of its level.  Any of them may be absent (null), which means
// empty; adding to an absent one creates it.
struct subgraph {
  graph *g;         // in canonical form once looked up or kept; in this block
  int count;        // transactions that contain it; 0 until counted
  int parents;      // entries in use
  int kept[2];      // those of them under which it is joined, by pid; -1 none
  char *entries;    // of sg_parent, one behind another; in this block
  int entry_bytes;  // of each
  int parents_room; // entries that fit
  ksstack *child;   // of int: patterns of the next level registered under it;
                    // the search has core_links instead
  ksstack *tid;     // of int: transactions, or their bound before the count
  ksstack *cover;   // of int: next-level patterns assigned to it; the search
                    // has none
  ksstack *rows;    // embeddings by transaction (mining/embeddings.h), or null
  bool invariant; // g is known not to depend on the order its vertices came in
  bool rigid;     // g is known to have the identity as its only automorphism
  bool in_arena;  // this block belongs to an arena
};

// A new record with room for es slots, vs vertices and a parent for each edge,
// and with empty id sets; freed with sg_free.
subgraph *sg_create(int es, int vs);
// Header and graph only, without room for parents and without sets, in caller
// memory of sg_size(es, vs) bytes.
subgraph *sg_init(void *memory, int es, int vs);
size_t sg_size(int es, int vs);
// Bytes of a record's block.
size_t sg_block_bytes(const subgraph *sg);
// A new record with deep copies of the sets that are present and no room to
// spare; its graph is without vertex ids.  Its block is taken from memory or,
// where that is null, is one of its own.
subgraph *sg_copy(const subgraph *sg, arena *memory = nullptr);
// Moves a record to a copy of its block in memory, where its graph is without
// vertex ids, and frees the old one.
subgraph *sg_move(subgraph *sg, arena *memory);
// Graph and count only, in caller memory of sg_size() bytes for the graph's
// sizes.
subgraph *sg_light_copy(const subgraph *sg, void *memory);
// Frees the sets and the block, which stays until the end of its arena if it
// has one.
void sg_free(subgraph *sg);

struct sg_deleter {
  void operator()(subgraph *sg) const { sg_free(sg); }
};
using sg_ptr = std::unique_ptr<subgraph, sg_deleter>;

// Order of records by their graphs: slots, vertices, key as a signed number,
// then offset and label of each vertex, then neighbour and label of each slot.
// Equal exactly when the canonical graphs are.
int sg_compare(const subgraph *x, const subgraph *y);

// All parents with their maps, in the order in which they were added.
inline int sg_parent_size(const subgraph *sg) { return sg->parents; }
inline sg_parent *sg_parent_at(const subgraph *sg, int i) {
  return reinterpret_cast<sg_parent *>(sg->entries + static_cast<ptrdiff_t>(i) *
                                                         sg->entry_bytes);
}
// Adds an entry, with the map as it is, for a record that has room for it.
sg_parent *sg_add_parent(subgraph *sg, const sg_parent *entry);
void sg_clear_parents(subgraph *sg);

// The kept ones of them, at most two, by pid; null for none of that pid.
inline int sg_kept_size(const subgraph *sg) {
  return (sg->kept[0] != -1) + (sg->kept[1] != -1);
}
inline const sg_parent *sg_kept_at(const subgraph *sg, int i) {
  return sg_parent_at(sg, sg->kept[i]);
}
inline const sg_parent *sg_find_kept(const subgraph *sg, int pid) {
  for (int i = 0; i < sg_kept_size(sg); i++)
    if (sg_kept_at(sg, i)->pid == pid)
      return sg_kept_at(sg, i);
  return nullptr;
}

// The TID list.
inline int sg_tid_size(const subgraph *sg) {
  return sg->tid ? sg->tid->count : 0;
}
inline int sg_tid_at(const subgraph *sg, int i) {
  return ksstack_get<int>(sg->tid, i);
}
void sg_append_tid(subgraph *sg, int tid); // tid is above all present

} // namespace kestro
