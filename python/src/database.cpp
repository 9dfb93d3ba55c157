// kestro::database as a Python class, and packed arrays made from it and into
// it.
//
// Packed, the graphs of a database are: how many vertices and edges each has,
// then label ids of all vertices, ends and label ids of all edges, one graph
// behind another, and the two tables of labels.  All costs are proportional to
// that.

#include "database.h"

#include <span>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include <kestro/kestro.h>

#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include "arrays.h"

namespace kestro_python {

using kestro::database;
using kestro::database_builder;
using kestro::edge;
using kestro::graph_view;
using kestro::label_rule;
using kestro::labelled_edge;

static std::string_view view_of(const nb::bytes &b) {
  return {b.c_str(), b.size()};
}

using label_table = std::vector<nb::bytes>;

static std::vector<std::string_view> table_of(const label_table &labels) {
  std::vector<std::string_view> table;
  for (const nb::bytes &label : labels)
    table.push_back(view_of(label));
  return table;
}

namespace {

// Packed arrays, read graph by graph.
class packed_graphs {
public:
  packed_graphs(input<int64_t> vertex_counts, input<int64_t> edge_counts,
                input<int32_t> vertex_labels, input_pairs<int64_t> ends,
                input<int32_t> edge_labels, const label_table &vertex_table,
                const label_table &edge_table)
      : vertex_counts_(std::move(vertex_counts)),
        edge_counts_(std::move(edge_counts)),
        vertex_labels_(std::move(vertex_labels)), ends_(std::move(ends)),
        edge_labels_(std::move(edge_labels)),
        vertex_table_(table_of(vertex_table)),
        edge_table_(table_of(edge_table)) {
    if (vertex_counts_.size() != edge_counts_.size() ||
        ends_.shape(0) != edge_labels_.size())
      throw std::invalid_argument("packed arrays differ in length");
  }

  size_t size() const { return vertex_counts_.size(); }

  // Moves on to graph i, which must be the next one.
  void read(size_t i) {
    vertices.clear();
    edges.clear();
    const size_t vertex_end =
        end_of(vertex_, vertex_counts_.data()[i], vertex_labels_.size());
    const size_t edge_end =
        end_of(edge_, edge_counts_.data()[i], edge_labels_.size());
    for (; vertex_ < vertex_end; vertex_++)
      vertices.push_back(label(vertex_table_, vertex_labels_.data()[vertex_]));
    for (; edge_ < edge_end; edge_++)
      edges.push_back({end(ends_.data()[2 * edge_]),
                       end(ends_.data()[2 * edge_ + 1]),
                       label(edge_table_, edge_labels_.data()[edge_])});
  }

  std::vector<std::string_view> vertices; // of the graph read
  std::vector<labelled_edge> edges;

private:
  static size_t end_of(size_t first, int64_t count, size_t size) {
    if (count < 0 || static_cast<size_t>(count) > size - first)
      throw std::invalid_argument("packed arrays are shorter than counted");
    return first + static_cast<size_t>(count);
  }
  static std::string_view label(const std::vector<std::string_view> &table,
                                int32_t id) {
    if (id < 0 || static_cast<size_t>(id) >= table.size())
      throw std::invalid_argument("a label id is out of range");
    return table[static_cast<size_t>(id)];
  }
  // What no vertex can be is left to the builder to refuse.
  static int end(int64_t vertex) {
    return vertex < 0 || vertex > INT32_MAX ? -1 : static_cast<int>(vertex);
  }

  input<int64_t> vertex_counts_;
  input<int64_t> edge_counts_;
  input<int32_t> vertex_labels_;
  input_pairs<int64_t> ends_;
  input<int32_t> edge_labels_;
  std::vector<std::string_view> vertex_table_;
  std::vector<std::string_view> edge_table_;
  size_t vertex_ = 0; // first of the next graph
  size_t edge_ = 0;
};

using refusals = std::vector<std::pair<int64_t, std::string>>;

} // namespace

static std::pair<database, refusals>
from_arrays(input<int64_t> vertex_counts, input<int64_t> edge_counts,
            input<int32_t> vertex_labels, input_pairs<int64_t> edges,
            input<int32_t> edge_labels, const label_table &vertex_table,
            const label_table &edge_table, bool skip, bool readable,
            bool all_labels) {
  packed_graphs graphs(std::move(vertex_counts), std::move(edge_counts),
                       std::move(vertex_labels), std::move(edges),
                       std::move(edge_labels), vertex_table, edge_table);
  refusals refused;
  const label_rule rule =
      readable ? label_rule::readable : label_rule::writable;
  database_builder builder(rule);
  if (all_labels)
    builder = database_builder(
        kestro::labels::of_texts(table_of(vertex_table), table_of(edge_table)),
        rule);
  for (size_t i = 0; i < graphs.size(); i++) {
    graphs.read(i);
    try {
      builder.add(graphs.vertices, graphs.edges);
    } catch (const kestro::error &e) {
      refused.emplace_back(static_cast<int64_t>(i), e.what());
      if (!skip)
        break;
    }
  }
  return {std::move(builder).build(), std::move(refused)};
}

static nb::list table(int size, const auto &label) {
  nb::list all;
  for (int id = 0; id < size; id++) {
    const std::string_view text = label(id);
    all.append(nb::bytes(text.data(), text.size()));
  }
  return all;
}

static nb::dict to_arrays(const database &db) {
  std::vector<int64_t> vertex_counts;
  std::vector<int64_t> edge_counts;
  std::vector<int32_t> vertex_labels;
  std::vector<int64_t> edges;
  std::vector<int32_t> edge_labels;
  for (int tid = 0; tid < db.size(); tid++) {
    const graph_view g = db[tid];
    vertex_counts.push_back(g.vertices());
    edge_counts.push_back(g.edges());
    for (int v = 0; v < g.vertices(); v++)
      vertex_labels.push_back(g.vertex_label_id(v));
    for (const edge &e : g.all_edges()) {
      edges.push_back(e.from);
      edges.push_back(e.to);
      edge_labels.push_back(e.label);
    }
  }
  const kestro::labels &l = db.label_set();
  nb::dict packed;
  packed["vertex_counts"] = array_of(std::move(vertex_counts));
  packed["edge_counts"] = array_of(std::move(edge_counts));
  packed["vertex_labels"] = array_of(std::move(vertex_labels));
  packed["edges"] = pairs_of(std::move(edges));
  packed["edge_labels"] = array_of(std::move(edge_labels));
  packed["vertex_table"] =
      table(l.vertex_labels(), [&](int id) { return l.vertex_label(id); });
  packed["edge_table"] =
      table(l.edge_labels(), [&](int id) { return l.edge_label(id); });
  return packed;
}

// The texts of the vertex labels and of the edge labels, by id.
static nb::tuple labels_of(const database &db) {
  const kestro::labels &l = db.label_set();
  nb::list vertex_labels;
  for (int id = 0; id < l.vertex_labels(); id++)
    vertex_labels.append(text_of(l.vertex_label(id)));
  nb::list edge_labels;
  for (int id = 0; id < l.edge_labels(); id++)
    edge_labels.append(text_of(l.edge_label(id)));
  return nb::make_tuple(vertex_labels, edge_labels);
}

static database select(const database &db, input<int64_t> tids) {
  database_builder builder(label_rule::readable);
  std::vector<std::string_view> vertices;
  std::vector<labelled_edge> edges;
  for (size_t i = 0; i < tids.size(); i++) {
    const int64_t tid = tids.data()[i];
    if (tid < 0 || tid >= db.size())
      throw nb::index_error("graph out of range");
    const graph_view g = db[static_cast<int>(tid)];
    vertices.clear();
    edges.clear();
    for (int v = 0; v < g.vertices(); v++)
      vertices.push_back(g.vertex_label(v));
    for (const edge &e : g.all_edges())
      edges.push_back({e.from, e.to, g.edge_label(e)});
    builder.add(vertices, edges);
  }
  return std::move(builder).build();
}

// One graph: labels of its vertices, ends of its edges, labels of these.
static nb::tuple graph_of(const database &db, int tid) {
  const graph_view g = db[tid];
  nb::list vertices;
  for (int v = 0; v < g.vertices(); v++)
    vertices.append(text_of(g.vertex_label(v)));
  std::vector<int32_t> ends;
  nb::list labels;
  for (const edge &e : g.all_edges()) {
    ends.push_back(e.from);
    ends.push_back(e.to);
    labels.append(text_of(g.edge_label(e)));
  }
  return nb::make_tuple(vertices, pairs_of(std::move(ends)), labels);
}

static database read(const nb::bytes &path) {
  const std::string name(view_of(path));
  const nb::gil_scoped_release free;
  return database::read(name);
}

// The bytes are immutable, and the caller's reference keeps them.
static database parse(const nb::bytes &text, const nb::bytes &name) {
  const std::string_view bytes = view_of(text);
  const std::string path(view_of(name));
  const nb::gil_scoped_release free;
  return database::parse(bytes, path);
}

void bind_database(nb::module_ &m) {
  nb::class_<database>(m, "Database",
                       "Graphs with their labels; immutable, shared by copies.")
      .def_static("read", &read, nb::arg("path"), "The transactions of a file.")
      .def_static("parse", &parse, nb::arg("text"), nb::arg("name"),
                  "The transactions in bytes; name stands for the path in "
                  "errors.")
      .def_static("from_arrays", &from_arrays, nb::arg("vertex_counts"),
                  nb::arg("edge_counts"), nb::arg("vertex_labels"),
                  nb::arg("edges"), nb::arg("edge_labels"),
                  nb::arg("vertex_table"), nb::arg("edge_table"),
                  nb::arg("skip"), nb::arg("readable") = false,
                  nb::arg("all_labels") = false,
                  "A database of the graphs that can be built, and of the "
                  "others the number and the reason; without skip it ends at "
                  "the first of these.  Readable labels are all those that "
                  "files can hold.  With all_labels the database has those "
                  "of the tables, else those that occur.")
      .def("to_arrays", &to_arrays,
           nb::sig("def to_arrays(self) -> dict[str, typing.Any]"),
           "The packed arrays by name.")
      .def("labels", &labels_of,
           nb::sig("def labels(self) -> tuple[list[str], list[str]]"),
           "The vertex labels and the edge labels by id.")
      .def("select", &select, nb::arg("tids"),
           "A database of these graphs, in this order.")
      .def("graph", &graph_of, nb::arg("tid"),
           nb::sig("def graph(self, tid: int) -> tuple[list[str], "
                   "numpy.typing.NDArray[numpy.int32], list[str]]"),
           "Vertex labels, ends of edges, edge labels of a graph.")
      .def("__len__", &database::size);
}

} // namespace kestro_python
