// Reading transactions from a stream, pass by pass.
//
// Lines are read anew for every pass.  Vertices are looked up by walking over
// all ids, labels by binary search, and the edges are sorted as a whole.

#include "reference/graph/transactions.h"

#include <algorithm>
#include <string>
#include <tuple>

#include "base/error.h"
#include "base/fgetl.h"
#include "base/open_file.h"
#include "base/xmalloc.h"
#include "graph/graph_line.h"
#include "graph/graph_list.h"
#include "graph/transactions.h"
#include "reference/graph/graph.h"

namespace kestro {

static off_t position_of(FILE *stream) { return ftello(stream); }

static void go_to(FILE *stream, off_t position) {
  if (position == -1 || fseeko(stream, position, SEEK_SET))
    throw fatal_error("can't read a file 'input'\n");
}

void graph_count_transaction(FILE *stream, int *es, int *vs) {
  char piece[line_buffer::first_size];
  bool inside = false;
  *es = *vs = 0;
  for (;;) {
    const off_t start = position_of(stream);
    if (!fgets(piece, sizeof piece, stream))
      return;
    const int kind = graph_line_kind(piece);
    if (kind == graph_line_transaction && inside) {
      go_to(stream, start);
      return;
    }
    inside = inside || kind == graph_line_transaction;
    *vs += kind == graph_line_vertex;
    if (graph_line_is_edge(kind))
      *es += kind == graph_line_edge ? 2 : 1;
  }
}

// Calls visit with every vertex and edge line up to the second "t" line, which
// is read, too; returns where that begins, or the end.
template <class Visit>
static off_t walk_transaction(FILE *stream, Visit visit) {
  line_buffer line;
  bool inside = false;
  for (;;) {
    const off_t start = position_of(stream);
    if (!fgetl(line, stream))
      return start;
    const graph_line found = graph_scan_line(line.text, graph_line_most_label);
    if (found.kind == graph_line_transaction && inside)
      return start;
    inside = inside || found.kind == graph_line_transaction;
    if (found.label)
      visit(found);
  }
}

void set_vertex_ids(FILE *stream, graph *g) {
  int vertices = 0;
  walk_transaction(stream, [&](const graph_line &line) {
    if (line.kind != graph_line_vertex)
      return;
    if (vertices < g->vs)
      g->vid[vertices] = line.a;
    vertices++; // counted on beyond the room, for the check below
  });
  KESTRO_CHECK(vertices == g->vs);
}

namespace {

// A directed edge as read.
struct edge_record {
  int from;  // vertex index
  int to;    // vertex index
  int label; // edge label id
};

} // namespace

static std::string label_of(const graph_line &line) {
  return std::string(line.label, static_cast<size_t>(line.label_length));
}

static void add_edge(const graph_line &line, const graph *g,
                     const label_set *ls, xvector<edge_record> *records) {
  if (line.a == line.b)
    die("graph.c", "something wrong\n");
  if (!graph_line_is_edge(line.kind))
    die("graph.c", "wrong edge type (%d)\n", line.kind);
  const int from = graph_find_vid(g, std::min(line.a, line.b));
  const int to = graph_find_vid(g, std::max(line.a, line.b));
  const int label = label_set_edge_label_id(ls, label_of(line).c_str());
  records->push_back({from, to, label});
  if (line.kind == graph_line_edge)
    records->push_back({to, from, label});
}

// The label shown is the one whose id equals the from index of the record read
// after the first of the pair: odd, but what recorded messages show.
static void refuse_duplicates(const xvector<const edge_record *> &sorted,
                              const edge_record *last, const label_set *ls) {
  for (size_t i = 1; i < sorted.size(); i++) {
    const edge_record *x = sorted[i - 1];
    if (x->from == sorted[i]->from && x->to == sorted[i]->to)
      die("graph.c", "duplicated edges (%d, %d):%s\n", x->from, x->to,
          label_set_edge_label(ls, x == last ? 0 : (x + 1)->from));
  }
}

static void lay_out(const xvector<const edge_record *> &sorted, graph *g) {
  std::fill_n(g->v, g->vs + 1, 0);
  int slot = 0;
  for (const edge_record *record : sorted) {
    g->e[slot] = record->to;
    g->elabel[slot++] = record->label;
    g->v[record->from + 1]++;
  }
  for (int i = 0; i < g->vs; i++)
    g->v[i + 1] += g->v[i];
}

void graph_fill_transaction(FILE *stream, graph *g, const label_set *ls) {
  int vertices = 0;
  xvector<edge_record> records;
  const off_t next = walk_transaction(stream, [&](const graph_line &line) {
    if (line.kind != graph_line_vertex) {
      add_edge(line, g, ls, &records);
      return;
    }
    KESTRO_CHECK(vertices < g->vs);
    g->vlabel[vertices++] =
        label_set_vertex_label_id(ls, label_of(line).c_str());
  });
  const int edges = int_count(records.size());
  KESTRO_CHECK(vertices == g->vs);
  KESTRO_CHECK(edges == g->es);
  xvector<const edge_record *> sorted;
  for (const edge_record &record : records)
    sorted.push_back(&record);
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const edge_record *x, const edge_record *y) {
                     return std::tie(x->from, x->to, x->label) <
                            std::tie(y->from, y->to, y->label);
                   });
  refuse_duplicates(sorted, records.empty() ? nullptr : &records.back(), ls);
  lay_out(sorted, g);
  for (int i = 0; i < g->vs; i++)
    g->vid[i] = i;
  KESTRO_STRUCTURE(graph_check(g));
  go_to(stream, next);
}

graph *graph_read_next_transaction(FILE *stream, const label_set *ls) {
  const off_t start = position_of(stream);
  int es;
  int vs;
  graph_count_transaction(stream, &es, &vs);
  go_to(stream, start);
  graph_ptr g(graph_create(es, vs));
  set_vertex_ids(stream, g.get());
  go_to(stream, start);
  graph_fill_transaction(stream, g.get(), ls);
  return g.release();
}

// Moves the stream to its next "t" line; false at its end.
static bool seek_transaction(FILE *stream, line_buffer *line) {
  for (;;) {
    const off_t start = position_of(stream);
    if (!fgetl(*line, stream))
      return false;
    if (graph_line_kind(line->text) == graph_line_transaction) {
      go_to(stream, start);
      return true;
    }
  }
}

graph *graph_read_transaction_file(const char *name, const label_set *ls) {
  const file_ptr stream(open_file(name, "r"));
  line_buffer line;
  seek_transaction(stream.get(), &line);
  return graph_read_next_transaction(stream.get(), ls);
}

graph_list *graph_read_transactions(const char *name, const label_set *ls) {
  const file_ptr stream(open_file(name, "r"));
  line_buffer line;
  graph_list_ptr list(graph_list_new());
  while (seek_transaction(stream.get(), &line))
    graph_list_push(graph_ptr(graph_read_next_transaction(stream.get(), ls)),
                    list.get());
  return list.release();
}

} // namespace kestro
