// The edges of all transactions by their ends, laid out for placing one edge
// after another: a transaction's lie in a few lines of the cache.
#pragma once

#include <cstdint>

#include "base/interruption.h"
#include "base/open_table.h"
#include "base/xmalloc.h"
#include "graph/graph_list.h"

namespace kestro {

// Every edge has a slot at either end, a word of the vertex that it leads to
// and of its kind: its label and that vertex's.
class edge_slots {
public:
  // Transactions with more vertices have none: nothing can be asked of any.
  static constexpr int max_vertices = UINT16_MAX + 1;
  // The number that kinds share beyond those that have one of their own.
  static constexpr int other_kinds = UINT16_MAX;

  // Borrows transactions.  Throws interrupted when stop, which may be null,
  // says so.
  explicit edge_slots(const graph_list *transactions,
                      const interruption *stop = nullptr);

  // The number of a kind; -1 where no edge is of it.
  int kind_of(int elabel, int vlabel) const;

  // The slots of a vertex, ascending by the vertex that they lead to.
  struct range {
    const uint32_t *first;
    const uint32_t *last;
  };
  range of(int tid, int u) const {
    const uint32_t *words = words_.data() + first_[static_cast<size_t>(tid)];
    return {words + words[u], words + words[u + 1]};
  }
  static uint32_t slot(int end, int kind) {
    return static_cast<uint32_t>(end) << 16 | static_cast<uint32_t>(kind);
  }
  static int end_of(uint32_t slot) { return static_cast<int>(slot >> 16); }
  static int kind_in(uint32_t slot) { return static_cast<int>(slot & 0xffff); }

  // Whether the edge of u's slot number i is of that kind, for those that have
  // no number of their own.
  bool is_of_kind(int tid, int u, ptrdiff_t i, int elabel, int vlabel) const {
    const graph *t = graph_list_at(transactions_, tid);
    const ptrdiff_t j = t->v[u] + i;
    return t->elabel[j] == elabel && t->vlabel[t->e[j]] == vlabel;
  }

private:
  struct numbered_kind {
    int elabel = -1; // -1: free
    int vlabel = -1;
    int number = -1;

    bool in_use() const { return elabel != -1; }
    uint64_t hash() const { return hash_of(elabel, vlabel); }
    static uint64_t hash_of(int elabel, int vlabel) {
      return mixed(mixed(0, static_cast<uint32_t>(elabel)),
                   static_cast<uint32_t>(vlabel));
    }
  };

  int number_kind(int elabel, int vlabel);
  void add(const graph *t);

  const graph_list *transactions_;
  open_table<numbered_kind> kinds_;
  xvector<uint32_t> words_; // per transaction: where each vertex's slots start,
                            // and the end, from here; then the slots
  xvector<size_t> first_;   // per transaction
};

} // namespace kestro
