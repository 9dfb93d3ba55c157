// Pattern records, levels and databases for tests.
#pragma once

#include <initializer_list>
#include <utility>
#include <vector>

#include "graph/graph_list.h"
#include "mining/parents.h"
#include "mining/sg_set.h"
#include "reference/cl/canonical_calls.h"
#include "reference/mining/subgraph.h"
#include "support/graphs.h"

namespace kestro {

// A record of a graph as it is, and of its canonical form.  Both have room for
// ten parents more than edges.
inline sg_ptr record_of(const graph_ptr &g) {
  sg_ptr sg(sg_create(g->es + 20, g->vs));
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
      : memory_(sg_parent_bytes(static_cast<int>(map.size())) / sizeof(int)) {
    auto *entry = reinterpret_cast<sg_parent *>(memory_.data());
    entry->pid = pid;
    entry->u = static_cast<int16_t>(u);
    entry->v = static_cast<int16_t>(v);
    entry->vs = static_cast<int16_t>(map.size());
    for (size_t i = 0; i < map.size(); i++)
      entry->set_image(static_cast<int>(i), map[i]);
  }
  operator const sg_parent *() const {
    return reinterpret_cast<const sg_parent *>(memory_.data());
  }

private:
  std::vector<int> memory_;
};

// Adds a parent of which only the id matters.
inline void add_parent(subgraph *sg, int pid) {
  sg_add_parent(
      sg, parent_entry(pid, 0, 0,
                       std::vector<int>(static_cast<size_t>(sg->g->vs), 0)));
}

// The ids of all parents, each once; those of the kept ones.
inline std::vector<int> pids_of(const subgraph *sg) {
  xvector<int> ids;
  sg_parent_ids(sg, &ids);
  return {ids.begin(), ids.end()};
}
inline std::vector<int> kept_of(const subgraph *sg) {
  std::vector<int> ids;
  for (int i = 0; i < sg_kept_size(sg); i++)
    ids.push_back(sg_kept_at(sg, i)->pid);
  return ids;
}
inline std::vector<int> map_of(const sg_parent *entry) {
  std::vector<int> map;
  for (int i = 0; i < entry->vs; i++)
    map.push_back(entry->image(i));
  return map;
}

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
