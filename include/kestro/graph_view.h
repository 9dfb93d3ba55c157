// A labelled graph, looked at where it lies.
#pragma once

#include <cstddef>
#include <iterator>
#include <span>
#include <string_view>

#include <kestro/export.h>

namespace kestro {

struct graph;
struct label_set;

// An edge between two vertices, from below to.
struct edge {
  int from;
  int to;
  int label; // id among the labels of the database
};

// Borrows a graph of a database or of a result, and its labels; valid as long
// as a copy of that database or result is.  Functions throw error for a vertex
// or an id out of range.
class KESTRO_API graph_view {
public:
  class edge_iterator;
  class edge_range;

  int vertices() const; // how many
  int edges() const;
  int vertex_label_id(int vertex) const;
  std::string_view vertex_label(int vertex) const;
  std::string_view edge_label(int label_id) const;
  std::string_view edge_label(const edge &e) const {
    return edge_label(e.label);
  }
  // The neighbours of a vertex, ascending, and the label ids of the edges to
  // them.
  std::span<const int> neighbours(int vertex) const;
  std::span<const int> neighbour_labels(int vertex) const;
  // All edges, by from, then to: for (const edge &e : g.all_edges()).
  edge_range all_edges() const;

private:
  friend struct access;
  graph_view(const graph *g, const label_set *ls) : graph_(g), labels_(ls) {}
  const graph *graph_;
  const label_set *labels_;
};

// Walks the edges of a graph; to its end that costs a step per vertex and two
// per edge.
class KESTRO_API graph_view::edge_iterator {
public:
  using value_type = edge;
  using difference_type = std::ptrdiff_t;
  using iterator_category = std::input_iterator_tag;

  edge_iterator() = default;
  edge operator*() const;
  edge_iterator &operator++();
  edge_iterator operator++(int) {
    const edge_iterator before = *this;
    ++*this;
    return before;
  }
  bool operator==(const edge_iterator &other) const = default;

private:
  friend class graph_view;
  edge_iterator(const graph *g, int vertex); // first edge from vertex on
  void settle(); // on the next slot that leads upwards
  const graph *graph_ = nullptr;
  int from_ = 0;
  int slot_ = 0;
};

class graph_view::edge_range {
public:
  edge_range(edge_iterator first, edge_iterator last)
      : first_(first), last_(last) {}
  edge_iterator begin() const { return first_; }
  edge_iterator end() const { return last_; }

private:
  edge_iterator first_;
  edge_iterator last_;
};

} // namespace kestro
