// Packing the patterns of a run.
//
// A level is counted before it is copied, so that every array grows once per
// level and holds no more than is in it.

#include "packed_patterns.h"

#include <span>
#include <utility>

#include "arrays.h"

namespace kestro_python {

packed_patterns::packed_patterns()
    : vertex_offsets_{0}, tid_offsets_{0}, parent_offsets_{0} {}

template <class T> static void reserve_more(std::vector<T> *v, size_t more) {
  v->reserve(v->size() + more);
}

void packed_patterns::make_room(const kestro::level &found) {
  const auto patterns = static_cast<size_t>(found.patterns());
  const size_t edges = patterns * static_cast<size_t>(found.size());
  size_t vertices = 0;
  size_t tids = 0;
  size_t parents = 0;
  for (int id = 0; id < found.patterns(); id++) {
    const kestro::pattern p = found[id];
    vertices += static_cast<size_t>(p.graph().vertices());
    tids += p.tids().size();
    parents += p.parents().size();
  }
  reserve_more(&vertex_offsets_, patterns);
  reserve_more(&vertex_labels_, vertices);
  reserve_more(&edges_, 2 * edges);
  reserve_more(&edge_labels_, edges);
  reserve_more(&supports_, patterns);
  reserve_more(&tid_offsets_, patterns);
  reserve_more(&tids_, tids);
  reserve_more(&parent_offsets_, patterns);
  reserve_more(&parents_, parents);
  reserve_more(&order_dependent_, patterns);
}

void packed_patterns::add(const kestro::pattern &p) {
  const kestro::graph_view g = p.graph();
  const int vertices = g.vertices();
  for (int v = 0; v < vertices; v++)
    vertex_labels_.push_back(g.vertex_label_id(v));
  vertex_offsets_.push_back(static_cast<int64_t>(vertex_labels_.size()));
  for (const kestro::edge &e : g.all_edges()) {
    edges_.push_back(e.from);
    edges_.push_back(e.to);
    edge_labels_.push_back(e.label);
  }
  supports_.push_back(p.support());
  const std::span<const int> tids = p.tids();
  tids_.insert(tids_.end(), tids.begin(), tids.end());
  tid_offsets_.push_back(static_cast<int64_t>(tids_.size()));
  const std::span<const int> parents = p.parents();
  parents_.insert(parents_.end(), parents.begin(), parents.end());
  parent_offsets_.push_back(static_cast<int64_t>(parents_.size()));
  order_dependent_.push_back(p.is_order_dependent());
}

void packed_patterns::add(const kestro::level &found) {
  make_room(found);
  for (int id = 0; id < found.patterns(); id++)
    add(found[id]);
  level_sizes_.push_back(found.size());
  level_ends_.push_back(static_cast<int64_t>(order_dependent_.size()));
}

nb::dict packed_patterns::hand_over(bool with_tids) {
  nb::dict packed;
  packed["level_sizes"] = array_of(std::move(level_sizes_));
  packed["level_ends"] = array_of(std::move(level_ends_));
  packed["vertex_offsets"] = array_of(std::move(vertex_offsets_));
  packed["vertex_labels"] = array_of(std::move(vertex_labels_));
  packed["edges"] = pairs_of(std::move(edges_));
  packed["edge_labels"] = array_of(std::move(edge_labels_));
  if (with_tids) {
    packed["tid_offsets"] = array_of(std::move(tid_offsets_));
    packed["tids"] = array_of(std::move(tids_));
  } else {
    packed["support"] = array_of(std::move(supports_));
  }
  packed["parent_offsets"] = array_of(std::move(parent_offsets_));
  packed["parents"] = array_of(std::move(parents_));
  packed["order_dependent"] = array_of(std::move(order_dependent_));
  return packed;
}

} // namespace kestro_python
