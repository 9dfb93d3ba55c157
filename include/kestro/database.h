// The graphs that are mined.
#pragma once

#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <kestro/export.h>
#include <kestro/graph_view.h>
#include <kestro/labels.h>

namespace kestro {

// Graphs with their labels.  Immutable; copies share the graphs, and any number
// of threads may use them.
class KESTRO_API database {
public:
  database();                           // no graphs
  database(const database &) = default; // and no move, as for labels
  database &operator=(const database &) = default;

  // The transactions of a file in the program's format, as the program reads
  // it: with labels of their own, or those given, which must hold all that
  // occur.  Throws error with the program's text, the path and the line: that
  // which can't be read, of two lines with one edge the second, and the "t"
  // line where over-long lines have upset the counting.  A folder reads as an
  // empty file.  Vertices are numbered in the order of their lines, whatever
  // ids the file gives them.
  static database read(const std::string &path);
  static database read(const std::string &path, const labels &known);
  // The same of bytes in memory; name stands for the path in errors.
  static database parse(std::string_view text, const std::string &name = "");
  static database parse(std::string_view text, const labels &known,
                        const std::string &name = "");

  int size() const; // graphs
  // Graph tid, from 0 to size() - 1; throws error for another number.
  graph_view operator[](int tid) const;
  const labels &label_set() const;

private:
  friend struct access;
  struct state;
  explicit database(std::shared_ptr<const state> s);
  std::shared_ptr<const state> state_;
};

// An edge to be built, between any two vertices.  It borrows its label, which
// must last until the edge is added; adding copies it.
struct labelled_edge {
  int from;
  int to;
  std::string_view label;
};

// Which labels a builder takes.  None has blanks in it.
enum class label_rule {
  // 1 to 998 bytes, which is what a line of a file holds for certain, without
  // control characters.
  writable,
  // What can be read from a file: 1 to 1,023 bytes without a byte of nought.
  readable
};

// Builds a database in memory, graph by graph.  What has been moved from can
// only be assigned to or destroyed.
class KESTRO_API database_builder {
public:
  database_builder();
  // With another rule than writable: for copies of graphs that were read.
  explicit database_builder(label_rule rule);
  // With the labels given, which must hold all that are added.
  explicit database_builder(const labels &known,
                            label_rule rule = label_rule::writable);
  database_builder(database_builder &&) noexcept;
  database_builder &operator=(database_builder &&) noexcept;
  ~database_builder();

  // Adds a graph of vertices with these labels, numbered in their order, and
  // edges; returns its number.  Throws error, with the graph's number and the
  // vertex's or edge's, for a label against the rule, an end out of range, a
  // loop, two edges between the same ends; the builder is then as it was.
  int add(std::span<const std::string_view> vertex_labels,
          std::span<const labelled_edge> edges);
  int add(std::span<const std::string> vertex_labels,
          std::span<const labelled_edge> edges);
  int add(std::initializer_list<std::string_view> vertex_labels,
          std::initializer_list<labelled_edge> edges);
  int add(std::initializer_list<std::string_view> vertex_labels,
          std::span<const labelled_edge> edges);
  int size() const; // graphs added

  // All graphs added, and the labels given or else those that occur:
  // std::move(builder).build().  The builder is empty afterwards; when memory
  // runs out it is empty or as it was.
  database build() &&;

private:
  struct state;
  std::unique_ptr<state> state_;
};

} // namespace kestro
