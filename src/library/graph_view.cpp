// Graphs as the public face shows them: the arrays of the graph record, and the
// texts of their labels.

#include <kestro/graph_view.h>

#include "graph/graph.h"
#include "library/arguments.h"

namespace kestro {

static void check_vertex(const graph *g, int vertex) {
  check_index("vertex", vertex, g->vs);
}

int graph_view::vertices() const { return graph_->vs; }

int graph_view::edges() const { return graph_->es / 2; }

int graph_view::vertex_label_id(int vertex) const {
  check_vertex(graph_, vertex);
  return graph_->vlabel[vertex];
}

std::string_view graph_view::vertex_label(int vertex) const {
  return vertex_label_text(labels_, vertex_label_id(vertex));
}

std::string_view graph_view::edge_label(int label_id) const {
  return edge_label_text(labels_, label_id);
}

// What an array of slots holds of a vertex.
static std::span<const int> slots_of(const graph *g, const int *slots,
                                     int vertex) {
  check_vertex(g, vertex);
  return {slots + g->v[vertex], slots + g->v[vertex + 1]};
}

std::span<const int> graph_view::neighbours(int vertex) const {
  return slots_of(graph_, graph_->e, vertex);
}

std::span<const int> graph_view::neighbour_labels(int vertex) const {
  return slots_of(graph_, graph_->elabel, vertex);
}

graph_view::edge_range graph_view::all_edges() const {
  return {edge_iterator(graph_, 0), edge_iterator(graph_, graph_->vs)};
}

graph_view::edge_iterator::edge_iterator(const graph *g, int vertex)
    : graph_(g), from_(vertex), slot_(g->v[vertex]) {
  settle();
}

edge graph_view::edge_iterator::operator*() const {
  return {from_, graph_->e[slot_], graph_->elabel[slot_]};
}

graph_view::edge_iterator &graph_view::edge_iterator::operator++() {
  slot_++;
  settle();
  return *this;
}

// Lists are ascending, so slots that lead upwards are the last ones of theirs.
void graph_view::edge_iterator::settle() {
  for (; from_ < graph_->vs; from_++)
    for (; slot_ < graph_->v[from_ + 1]; slot_++)
      if (graph_->e[slot_] > from_)
        return;
}

} // namespace kestro
