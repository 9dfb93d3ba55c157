// One level as the library shows it.
#pragma once

#include <cstddef>
#include <span>

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "graph/graph_list.h"
#include "graph/label_set.h"
#include "mining/sg_set.h"

namespace kestro {

// One pattern of a level: what it borrows, and its places in the level's lists.
struct level_record {
  const graph *g;
  const int *tids; // ascending, null where there is no list
  int support;     // 0 for candidates
  bool invariant;
  size_t first_parent; // those of the next record end them
  size_t first_image;  // vs images per TID, where embeddings are kept
};

// The records of one size, by id.  The graphs and TIDs are borrowed from the
// search, or stand in graphs and tids once they are kept.
struct level_data {
  int size = 0; // edges
  const label_set *labels = nullptr;
  const sg_set *source = nullptr; // where it is borrowed from
  xvector<level_record> records;
  xvector<int> parents; // ids, record after record
  xvector<int> images;  // vertices of transactions, record after record
  xvector<int> tids;
  xvector<std::max_align_t> graphs;

  int count() const { return static_cast<int>(records.size()); }
  std::span<const int> parents_of(int id) const;
};

// A level that borrows from a level or candidates of the search.
level_data look_at(const sg_set *set, int size, const label_set *labels);
// The same with graphs and TIDs of its own, without slack.
level_data kept(level_data borrowed);

// Gives every pattern its first embedding, along its vertices breadth first, in
// each of its transactions.
void add_embeddings(level_data *level, const graph_list *transactions, int jobs,
                    const interruption *stop);

} // namespace kestro
