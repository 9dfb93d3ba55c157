// Writing a graph in the line format of transaction files.
#pragma once

#include <cstring>
#include <string_view>

#include "base/ksstack.h"
#include "base/text_buffer.h"
#include "base/xmalloc.h"
#include "graph/graph.h"
#include "graph/label_set.h"

namespace kestro {

// The labels of one kind as they end a line: a blank, the label, a newline.
class line_ends {
public:
  explicit line_ends(const ksstack *labels);
  line_ends(const line_ends &) = delete;
  line_ends &operator=(const line_ends &) = delete;

  bool has(int id) const { return static_cast<size_t>(id) < ends_.size(); }
  // Puts the end with label id, which must be there, to at, where there is room
  // for most_put() bytes; returns where it ends.
  char *put(char *at, int id) const {
    const std::string_view end = ends_[static_cast<size_t>(id)];
    memcpy(at, end.data(), block);
    if (end.size() > block)
      memcpy(at + block, end.data() + block, end.size() - block);
    return at + end.size();
  }
  size_t most_put() const { return longest_ + block; }

private:
  // Bytes copied at once, whatever the size: one instruction each way, and few
  // ends are longer.
  static constexpr size_t block = 16;

  xvector<char> text_;             // all ends, and a block behind them
  xvector<std::string_view> ends_; // by id, in text_
  size_t longest_ = 0;             // bytes
};

// Writes graphs with the labels of one set, which is complete.  The set is read
// once, when the writer is made.
class graph_writer {
public:
  explicit graph_writer(const label_set *ls)
      : vertex_ends_(ls->vertex_labels), edge_ends_(ls->edge_labels) {}

  // Writes the vertex and edge lines of g, which has no marks: "v INDEX LABEL"
  // for each vertex, then each edge once, from its smaller end, as "u FROM TO
  // LABEL"; an edge whose two slots carry different labels is written from
  // either end as a "d" line.  The caller writes the "t" line.  Dies with
  // "invalid index" at a label that the set lacks, behind the lines before.
  void write(const graph *g, text_buffer &out);

private:
  void write_vertices(const graph *g, text_buffer &out) const;
  void write_edges(const graph *g, text_buffer &out);
  void write_slots_from(const graph *g, int i, int j, text_buffer &out) const;

  line_ends vertex_ends_;
  line_ends edge_ends_;
  xvector<int> next_; // by vertex, its first slot whose edge is not written
};

} // namespace kestro
