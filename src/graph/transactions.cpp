// The transaction reader.
//
// Each transaction is read three times from its "t" line on: to count, so that
// its graph is allocated once at its exact size; to collect the vertex ids, so
// that edges may come before their vertices; and to fill the graph.  Between
// the passes the stream goes back, so no transaction is buffered.  The counting
// pass reads pieces of at most 1,023 characters where the others read whole
// lines; where the two disagree, on over-long lines, the checks of the later
// passes end the run before anything is written out of bounds.

#include "graph/transactions.h"

#include <algorithm>

#include "base/error.h"
#include "base/fgetl.h"
#include "base/xmalloc.h"
#include "graph/graph_line.h"

namespace kestro {

namespace {

// A directed edge as read.
struct edge_record {
  int from;  // vertex index
  int to;    // vertex index
  int label; // edge label id
};

// Tells where a transaction ends: at its second "t" line.
class transaction_end {
public:
  bool reached(int kind) {
    if (kind != graph_line_transaction)
      return false;
    const bool second = inside_;
    inside_ = true;
    return second;
  }

private:
  bool inside_ = false;
};

} // namespace

void graph_count_transaction(FILE *stream, int *es, int *vs) {
  char piece[line_buffer::first_size];
  transaction_end end;
  fpos_t start;
  *es = *vs = 0;
  for (;;) {
    fgetpos(stream, &start);
    if (!fgets(piece, sizeof piece, stream))
      return;
    const int kind = graph_line_kind(piece);
    if (end.reached(kind)) {
      fsetpos(stream, &start);
      return;
    }
    if (kind == graph_line_vertex)
      ++*vs;
    else if (graph_line_is_edge(kind))
      *es += kind == graph_line_edge ? 2 : 1;
  }
}

void set_vertex_ids(FILE *stream, graph *g) {
  line_buffer line;
  line_buffer label;
  transaction_end end;
  int vertices = 0;
  int a;
  int b;
  while (fgetl(line, stream)) {
    const int kind =
        graph_parse_line(line.text, &a, &b, &label.text, &label.size);
    if (end.reached(kind))
      break;
    if (kind != graph_line_vertex)
      continue;
    if (vertices < g->vs)
      g->vid[vertices] = a;
    vertices++; // counted on beyond the room, for the check below
  }
  KESTRO_CHECK(vertices == g->vs);
}

namespace {

// Collects the vertex and edge lines of one transaction.
class transaction_filler {
public:
  transaction_filler(graph *g, const label_set *ls)
      : g_(g), ls_(ls), records_(static_cast<size_t>(g->es)) {}

  void add_vertex(int id, const char *label) {
    KESTRO_CHECK(vertices_ < g_->vs);
    g_->vlabel[vertices_] = label_set_vertex_label_id(ls_, label);
    g_->vid[vertices_++] = id;
  }

  void add_edge(int kind, int a, int b, const char *label) {
    if (a == b)
      die("graph.c", "something wrong\n");
    if (!graph_line_is_edge(kind))
      die("graph.c", "wrong edge type (%d)\n", kind);
    const int from = graph_find_vid(g_, std::min(a, b));
    const int to = graph_find_vid(g_, std::max(a, b));
    const int id = label_set_edge_label_id(ls_, label);
    add_record({from, to, id});
    if (kind == graph_line_edge)
      add_record({to, from, id});
  }

  // Lays the collected edges out in the graph.
  void finish() {
    KESTRO_CHECK(vertices_ == g_->vs);
    KESTRO_CHECK(edges_ == g_->es);
    xvector<const edge_record *> sorted;
    for (const edge_record &record : records_)
      sorted.push_back(&record);
    std::stable_sort(sorted.begin(), sorted.end(), precedes);
    refuse_duplicates(sorted);
    fill_slots(sorted);
    for (int i = 0; i < g_->vs; i++)
      g_->vid[i] = i;
    KESTRO_STRUCTURE(graph_check(g_));
  }

private:
  void add_record(edge_record record) {
    if (edges_ < g_->es)
      records_[static_cast<size_t>(edges_)] = record;
    edges_++; // counted on beyond the room, for the check at the end
  }

  static bool precedes(const edge_record *x, const edge_record *y) {
    if (x->from != y->from)
      return x->from < y->from;
    if (x->to != y->to)
      return x->to < y->to;
    return x->label < y->label;
  }

  // The label shown in the message is the one whose id equals the from index
  // of the record read after the first of the pair: odd, but what recorded
  // messages show.
  void refuse_duplicates(const xvector<const edge_record *> &sorted) const {
    for (size_t i = 0; i + 1 < sorted.size(); i++) {
      const edge_record *x = sorted[i];
      if (x->from != sorted[i + 1]->from || x->to != sorted[i + 1]->to)
        continue;
      const bool last = x == &records_.back();
      const int id = last ? 0 : (x + 1)->from;
      die("graph.c", "duplicated edges (%d, %d):%s\n", x->from, x->to,
          label_set_edge_label(ls_, id));
    }
  }

  void fill_slots(const xvector<const edge_record *> &sorted) {
    std::fill(g_->v, g_->v + g_->vs + 1, 0);
    for (size_t i = 0; i < sorted.size(); i++) {
      g_->e[i] = sorted[i]->to;
      g_->elabel[i] = sorted[i]->label;
      g_->v[sorted[i]->from + 1]++;
    }
    for (int i = 0; i < g_->vs; i++)
      g_->v[i + 1] += g_->v[i];
  }

  graph *g_;
  const label_set *ls_;
  xvector<edge_record> records_; // in the order read
  int vertices_ = 0;
  int edges_ = 0;
};

} // namespace

void graph_fill_transaction(FILE *stream, graph *g, const label_set *ls) {
  line_buffer line;
  line_buffer label;
  transaction_end end;
  transaction_filler filler(g, ls);
  int lines = 0;
  fpos_t next; // the start of the line after the last one that counts
  int a;
  int b;
  while (fgetl(line, stream)) {
    const int kind =
        graph_parse_line(line.text, &a, &b, &label.text, &label.size);
    if (end.reached(kind))
      break;
    if (kind == graph_line_vertex)
      filler.add_vertex(a, label.text);
    else if (kind & graph_line_edge_bit)
      filler.add_edge(kind, a, b, label.text);
    fgetpos(stream, &next);
    lines++;
  }
  filler.finish();
  if (lines)
    fsetpos(stream, &next);
}

graph *graph_read_next_transaction(FILE *stream, const label_set *ls) {
  fpos_t start;
  int es;
  int vs;
  fgetpos(stream, &start);
  graph_count_transaction(stream, &es, &vs);
  graph_ptr g(graph_create(es, vs));
  fsetpos(stream, &start);
  set_vertex_ids(stream, g.get());
  fsetpos(stream, &start);
  graph_fill_transaction(stream, g.get(), ls);
  return g.release();
}

// Moves the stream to the start of the next "t" line; false at its end.
static bool seek_transaction(FILE *stream, line_buffer &line) {
  fpos_t start;
  do {
    fgetpos(stream, &start);
    if (!fgetl(line, stream))
      return false;
  } while (graph_line_kind(line.text) != graph_line_transaction);
  fsetpos(stream, &start);
  return true;
}

graph *graph_read_transaction_file(const char *name, const label_set *ls) {
  file_ptr stream(open_file(name, "r"));
  line_buffer line;
  seek_transaction(stream.get(), line);
  return graph_read_next_transaction(stream.get(), ls);
}

ksstack *graph_read_transactions(const char *name, const label_set *ls) {
  file_ptr stream(open_file(name, "r"));
  line_buffer line;
  graph_list_ptr list(graph_list_new());
  while (seek_transaction(stream.get(), line))
    graph_list_push(graph_ptr(graph_read_next_transaction(stream.get(), ls)),
                    list.get());
  return list.release();
}

} // namespace kestro
