// Reading transaction files: text in, graphs with label ids out.
#pragma once

#include <string_view>

#include "base/text_lines.h"
#include "graph/graph_line.h"
#include "graph/graph_list.h"
#include "graph/label_index.h"
#include "graph/label_set.h"
#include "graph/vertex_ids.h"

namespace kestro {

// A new list of the transactions of a text, in its order; a transaction's
// position is its TID.  Dies at malformed lines, labels that ls does not hold,
// unknown vertex ids, loops and duplicate edges.  The error names the line: for
// a duplicate that of the second edge, and where vertices or edges are not as
// many as were counted the transaction's first one.
graph_list *graph_read_transactions(const file_text &text, const label_set *ls);

// The same of a text whose labels are not known yet; ls, an empty set, becomes
// that of label_set_build().  Dies as the two do one after the other, but takes
// one pass over the text where nothing is wrong with it, no line is long and a
// transaction is there.  After an error ls is undefined.
graph_list *graph_read_with_labels(const file_text &text, label_set *ls);

// Reads transactions one by one out of a text.
class transaction_reader {
public:
  // Borrows the labels, which stay as they are.
  explicit transaction_reader(const label_set *ls);
  // Numbers the labels itself, in the order in which they come; the words stay
  // in the text.
  transaction_reader() = default;

  // A new graph of the transaction whose "t" line is next; the lines are left
  // at the next "t" line.
  graph_ptr read(text_lines &lines);

  // Whether a line was too long for its transaction to be counted in passing.
  bool met_long_lines() const { return met_long_lines_; }
  // Notes the label of a line that belongs to no transaction.
  void note_label(const graph_line &line);
  // The words that this reader has numbered.
  const xvector<std::string_view> &vertex_words() const {
    return vertex_words_;
  }
  const xvector<std::string_view> &edge_words() const { return edge_words_; }

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
  int vertex_label(const graph_line &line);
  int edge_label(const graph_line &line);
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

  const label_set *ls_ = nullptr; // null for labels numbered here
  label_index vertex_labels_;
  label_index edge_labels_;
  xvector<std::string_view> vertex_words_;
  xvector<std::string_view> edge_words_;
  bool met_long_lines_ = false;

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

} // namespace kestro
