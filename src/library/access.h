// What the public classes hold, for the implementation.
#pragma once

#include <memory>

#include <kestro/database.h>
#include <kestro/graph_view.h>
#include <kestro/labels.h>
#include <kestro/mine.h>

#include "graph/graph_list.h"
#include "graph/label_set.h"

namespace kestro {

// The way to the inside of the public classes, which make it their friend, and
// the way back.  What is returned is borrowed but for what comes from new
// parts.
struct access {
  // A graph list, and the labels by which its graphs are numbered.
  static const graph_list *transactions(const database &db);
  static const kestro::label_set *label_set(const labels &l);
  static const kestro::label_set *label_set(const database &db);

  static graph_view view(const graph *g, const kestro::label_set *ls) {
    return {g, ls};
  }
  static const graph *graph_of(graph_view g) { return g.graph_; }
  static const kestro::label_set *label_set(graph_view g) { return g.labels_; }

  static level level_of(const level_data *data) { return level(data); }
  static const level_data *data_of(const level &l) { return l.level_; }
  static pattern pattern_of(const level_data *data, int id) {
    return {data, id};
  }
  static result result_of(std::shared_ptr<const result_data> data) {
    return result(std::move(data));
  }

  static labels make_labels(label_set_ptr ls);
  static database make_database(graph_list_ptr graphs, const labels &known);
};

} // namespace kestro
