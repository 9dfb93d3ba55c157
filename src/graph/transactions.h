// Reading transaction files: text in, graphs with label ids out.
#pragma once

#include <cstdio>

#include "base/fgetl.h"
#include "graph/graph_line.h"
#include "graph/graph_list.h"
#include "graph/label_index.h"
#include "graph/label_set.h"
#include "graph/vertex_ids.h"

namespace kestro {

// A new graph list of the transactions of a file, in file order; a
// transaction's position is its TID.  Dies at malformed lines, labels that ls
// does not hold, unknown vertex ids, loops and duplicate edges, telling the
// line: of duplicates the second one's, the transaction's first one where
// vertices or edges are not as many as were counted.
ksstack *graph_read_transactions(const char *name, const label_set *ls);
ksstack *graph_read_transactions(const file_text &text, const label_set *ls);

// Reads transactions one by one out of a text.
class transaction_reader {
public:
  // Borrows the labels, which stay as they are.
  explicit transaction_reader(const label_set *ls);

  // A new graph of the transaction whose "t" line is next; the lines are left
  // at the next "t" line.
  graph_ptr read(text_lines &lines);
  // Fills a graph of the right size whose vids are the ids; lines as above.
  void fill(text_lines &lines, graph *g);

private:
  // A directed edge as read.
  struct edge_record {
    int from;  // vertex index
    int to;    // vertex index
    int label; // edge label id
  };

  void parse(text_lines &lines, int *es, int *vs);
  graph_ptr graph_of_lines(int es, int vs);
  void begin(graph *g);
  void add_line(const graph_line &line);
  void add_vertex(const graph_line &line);
  void add_edge(const graph_line &line);
  void add_record(edge_record record);
  void finish();
  void sort_records_by_to();
  void fill_slots();
  void refuse_duplicates();
  [[noreturn]] void die_of_duplicate(int from, int to);
  void set_repeating_line(int from, int to);

  const label_set *ls_;
  label_index vertex_labels_;
  label_index edge_labels_;

  // The transaction being read.
  graph *g_ = nullptr;
  int vertices_ = 0; // added so far
  int edges_ = 0;    // records added so far
  vertex_ids ids_;
  xvector<graph_line> lines_;        // its vertex and edge lines
  xvector<edge_record> records_;     // in the order read
  xvector<int> by_to_;               // records by to, else in the order read
  xvector<int> next_;                // per vertex the next place of a record
  const char *first_line_ = nullptr; // of the transaction
  const char *wrong_line_ = nullptr; // a byte of the line that an error is of
};

// A new graph read from a stream that stands at a "t" line; the stream is left
// at the next one.  Reads the stream to its end on the way, so for more than
// one graph a transaction_reader is better.  The second form reads the first
// transaction of a file (an empty graph when it has none).
graph *graph_read_next_transaction(FILE *stream, const label_set *ls);
graph *graph_read_transaction_file(const char *name, const label_set *ls);

// The three passes over one transaction, each from its "t" line on.
// Counts its slots and vertices; leaves the stream at the next "t" line.
void graph_count_transaction(FILE *stream, int *es, int *vs);
// Stores the ids of all vertex lines in vid, so that edges can refer to
// vertices whose lines come later; leaves the stream behind the next "t" line.
// Fails the check "vertices == g->vs" when their number is not the counted one.
void set_vertex_ids(FILE *stream, graph *g);
// Fills the rest with the help of the ids, sets vid to the vertices' positions,
// and leaves the stream at the next "t" line.
void graph_fill_transaction(FILE *stream, graph *g, const label_set *ls);

} // namespace kestro
