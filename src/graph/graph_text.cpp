// The graph text writer.
//
// Vertices are written by index, not by vid, so what is written reads back as
// the same graph.  There are millions of lines of some ten bytes, so room is
// made for the lines of a graph at once, and what a line consists of is copied
// in blocks of fixed size, longer than what counts of them; the next block
// overwrites the rest.
//
// Edges are met in the order of their smaller ends.  Neighbour lists ascend, so
// each list meets its edges in its own order, too: a position in each tells the
// other slot of an edge without a search.

#include "graph/graph_text.h"

#include <algorithm>
#include <cstring>

#include "base/error.h"

namespace kestro {

line_ends::line_ends(const ksstack *labels) {
  size_t bytes = block;
  for (int id = 0; id < labels->count; id++)
    bytes += strlen(ksstack_get<char *>(labels, id)) + 2;
  text_.resize(bytes);
  ends_.reserve(static_cast<size_t>(labels->count));
  char *at = text_.data();
  for (int id = 0; id < labels->count; id++) {
    const std::string_view label = ksstack_get<char *>(labels, id);
    const size_t size = label.size() + 2;
    at[0] = ' ';
    label.copy(at + 1, label.size());
    at[size - 1] = '\n';
    ends_.emplace_back(at, size);
    longest_ = std::max(longest_, size);
    at += size;
  }
}

// What comes before a line's end: a letter and two numbers, a blank before
// each.
static constexpr size_t most_before_end = 3 + 2 * text_buffer::longest_int;

static char *put_vertex(char *at, int i) {
  *at++ = 'v';
  *at++ = ' ';
  return text_buffer::put(at, i);
}

static char *put_edge(char *at, char kind, int from, int to) {
  *at++ = kind;
  *at++ = ' ';
  at = text_buffer::put(at, from);
  *at++ = ' ';
  return text_buffer::put(at, to);
}

// With longer labels, or labels of a file that no line has, room for many lines
// would be much more than they take.
static constexpr size_t most_at_once = size_t{1} << 20; // bytes

static size_t most_for(int lines, const line_ends &ends) {
  return static_cast<size_t>(lines) * (most_before_end + ends.most_put());
}

// Room for that many lines with such ends.
static char *room_for(int lines, const line_ends &ends, text_buffer &out) {
  return out.room(most_for(lines, ends));
}

// Dies of a label that is not there; the lines up to at are kept.
[[noreturn]] static void die_of_label(const char *at, text_buffer &out) {
  out.end_at(at);
  ksstack_die_of_index();
}

void graph_writer::write_vertices(const graph *g, text_buffer &out) const {
  const int vs = g->vs;
  const int *const vlabel = g->vlabel;
  const int block = most_for(vs, vertex_ends_) <= most_at_once ? vs : 1;
  for (int i = 0; i < vs;) {
    char *at = room_for(block, vertex_ends_, out);
    for (const int end = i + block; i < end; i++) {
      if (!vertex_ends_.has(vlabel[i]))
        die_of_label(at, out);
      at = vertex_ends_.put(put_vertex(at, i), vlabel[i]);
    }
    out.end_at(at);
  }
}

// The general way: writes the lines of all slots from slot j of vertex i on.
void graph_writer::write_slots_from(const graph *g, int i, int j,
                                    text_buffer &out) const {
  for (; i < g->vs; i++)
    for (; j < g->v[i + 1]; j++) {
      const int to = g->e[j];
      const int k = graph_edge_index(g, to, i);
      assert(k != -1);
      const int label = g->elabel[j];
      const bool both_ways = label == g->elabel[k];
      if (both_ways && i > to)
        continue;
      char *const at = room_for(1, edge_ends_, out);
      if (!edge_ends_.has(label))
        die_of_label(at, out);
      const char kind = both_ways ? 'u' : 'd';
      out.end_at(edge_ends_.put(put_edge(at, kind, i, to), label));
    }
}

// Once the vertices before i are done, next[i] is the slot of the first
// neighbour greater than i.
void graph_writer::write_edges(const graph *g, text_buffer &out) {
  if (most_for(g->es / 2, edge_ends_) > most_at_once)
    return write_slots_from(g, 0, 0, out);
  next_.assign(g->v, g->v + g->vs);
  int *const next = next_.data();
  const int vs = g->vs;
  const int *const v = g->v;
  const int *const e = g->e;
  const int *const elabel = g->elabel;
  char *at = room_for(g->es / 2, edge_ends_, out);
  for (int i = 0; i < vs; i++) {
    const int end = v[i + 1];
    for (int j = next[i]; j < end; j++) {
      const int to = e[j];
      assert(i < to && to < vs);
      const int k = next[to]++;
      assert(k < v[to + 1] && e[k] == i);
      const int label = elabel[j];
      if (label != elabel[k]) { // the first such edge: so far both ways agree
        out.end_at(at);
        return write_slots_from(g, i, j, out);
      }
      if (!edge_ends_.has(label))
        die_of_label(at, out);
      at = edge_ends_.put(put_edge(at, 'u', i, to), label);
    }
  }
  out.end_at(at);
}

void graph_writer::write(const graph *g, text_buffer &out) {
  write_vertices(g, out);
  write_edges(g, out);
}

} // namespace kestro
