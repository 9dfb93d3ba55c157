// Pattern records, levels and databases for tests.
#pragma once

#include <initializer_list>
#include <utility>
#include <vector>

#include "graph/graph_list.h"
#include "mining/sg_set.h"
#include "reference/cl/canonical_calls.h"
#include "reference/mining/subgraph.h"
#include "support/graphs.h"

namespace kestro {

// A record of a graph as it is, and of its canonical form.
inline sg_ptr record_of(const graph_ptr &g) {
  sg_ptr sg(sg_create(g->es, g->vs));
  graph_copy_into(g.get(), sg->g);
  return sg;
}
inline sg_ptr canonical_record(const graph_ptr &g) {
  sg_ptr sg = record_of(g);
  cl_canonicalize_graph(sg->g);
  for (int i = 0; i < g->vs; i++)
    sg->g->vid[i] = i;
  return sg;
}

// The ids of a record's set.
inline std::vector<int> ids_of(const ksstack *s) {
  std::vector<int> ids;
  ids.reserve(static_cast<size_t>(s->count));
  for (int i = 0; i < s->count; i++)
    ids.push_back(ksstack_get<int>(s, i));
  return ids;
}

inline void set_tids(subgraph *sg, const std::vector<int> &tids) {
  sg_clear_tid(sg);
  for (const int tid : tids)
    sg_append_tid(sg, tid);
}

// A parent entry by value, for a pattern of as many vertices as map has
// entries.
class parent_entry {
public:
  parent_entry(int pid, int u, int v, const std::vector<int> &map)
      : ints_{pid, u, v, static_cast<int>(map.size())} {
    ints_.insert(ints_.end(), map.begin(), map.end());
  }
  operator const sg_parent *() const {
    return reinterpret_cast<const sg_parent *>(ints_.data());
  }

private:
  std::vector<int> ints_;
};

// A transaction set.
template <class... Graph> graph_list_ptr database_of(Graph... graphs) {
  graph_list_ptr list(graph_list_new());
  (graph_list_push(std::move(graphs), list.get()), ...);
  return list;
}

// A level of two-vertex patterns, told apart by key, with these TID lists and
// counted accordingly.
inline sg_set_ptr level_with_tids(const std::vector<std::vector<int>> &tids) {
  sg_set_ptr level(sg_set_create());
  for (size_t id = 0; id < tids.size(); id++) {
    sg_ptr sg = record_of(path_graph(2));
    sg->g->key = static_cast<uint32_t>(id);
    set_tids(sg.get(), tids[id]);
    sg->count = sg_support(sg.get());
    sg_set_push(level.get(), std::move(sg));
  }
  return level;
}

} // namespace kestro
