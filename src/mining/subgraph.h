// One pattern or candidate: its graph and what ties it to the levels below and
// above and to the transactions.
#pragma once

#include <memory>

#include "base/arena.h"
#include "base/ksstack.h"
#include "graph/graph.h"

namespace kestro {

// Header, followed in the same block by the graph.
//
// The id sets are ascending and without repeats; an id is a position in the
// sorted set of its level.  Any of them may be absent (null), which means
// empty; adding to an absent one creates it.
struct subgraph {
  graph *g;        // in canonical form once looked up or kept; in this block
  int count;       // transactions that contain it; 0 until counted
  ksstack *child;  // of int: patterns of the next level registered under it
  ksstack *parent; // of sg_parent: at most two, by pid
  ksstack *pid;    // of two ints, the second unused: all parents
  ksstack *tid;    // of int: transactions, or their bound before the count
  ksstack *cover;  // of int: next-level patterns assigned to it; empty
  ksstack *rows;   // embeddings by transaction (mining/embeddings.h), or null
  ksstack *links;  // all parents with maps (mining/links.h), or null
  size_t block;    // bytes of this block: sets within it are not freed alone
  bool invariant;  // g is known not to depend on the order its vertices came in
  bool rigid;      // g is known to have the identity as its only automorphism
  bool in_arena;   // this block belongs to an arena
};

// A way to reach a pattern from one of its parents, stored by value in blocks
// of 4 + vs ints:
//
//   | pid | u | v | vs | map: vs |
struct sg_parent {
  int pid; // the parent's id in the previous level
  int u;   // the edge u-v, u <= v, of this pattern that the parent lacks
  int v;
  int vs;    // vertices of this pattern
  int map[]; // per vertex, the parent's vertex, -1 for one that the
             // parent lacks, too
};

// Ints in a parent entry of a pattern with vs vertices.
inline int sg_parent_ints(int vs) { return 4 + vs; }

// A new record with room for es slots and vs vertices and five empty sets;
// freed with sg_free.
subgraph *sg_create(int es, int vs);
// The same in caller memory of sg_size(es, vs) bytes; the sets are still to be
// freed, with sg_free_sets.
subgraph *sg_init(void *memory, int es, int vs);
size_t sg_size(int es, int vs);
// A new record with deep copies of the sets that are present; pid, parent and
// links are in the record's block, which is taken from memory or, where that is
// null, is a block of its own.
subgraph *sg_copy(const subgraph *sg, arena *memory = nullptr);
// Moves a record to a copy of its block in memory and frees the old one.
subgraph *sg_move(subgraph *sg, arena *memory);
// Header and graph only, without sets, in caller memory of sg_size() bytes for
// the graph's sizes.
subgraph *sg_light_copy(const subgraph *sg, void *memory);
void sg_free_sets(subgraph *sg);
// Takes the links from a record, and frees them unless they are in its block.
void sg_free_links(subgraph *sg);
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

// The id sets.  add inserts unless present; clear keeps the memory.
int sg_child_size(const subgraph *sg);
int sg_child_at(const subgraph *sg, int i);
void sg_add_child(subgraph *sg, int id);

int sg_pid_size(const subgraph *sg);
int sg_pid_at(const subgraph *sg, int i);
void sg_add_pid(subgraph *sg, int id);
void sg_clear_pid(subgraph *sg);

int sg_tid_size(const subgraph *sg);
int sg_tid_at(const subgraph *sg, int i);
void sg_append_tid(subgraph *sg, int tid); // tid is above all present

// The parent entries: how many, the i-th, and the index of the one of a pid or
// -1.
int sg_parent_size(const subgraph *sg);
sg_parent *sg_parent_at(const subgraph *sg, int i);
int sg_find_parent(const subgraph *sg, int pid);
void sg_clear_parent(subgraph *sg);

} // namespace kestro
