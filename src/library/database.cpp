// Databases of the public face: the program's reader, and what it reads kept
// together.
//
// Graphs and labels are complete before they are handed out and stay as they
// are, so copies share them through a counted pointer.

#include <kestro/database.h>

#include <utility>

#include "graph/transactions.h"
#include "library/access.h"
#include "library/arguments.h"

namespace kestro {

struct database::state {
  graph_list_ptr graphs;
  labels known; // number the labels of the graphs
};

database::database(std::shared_ptr<const state> s) : state_(std::move(s)) {}

database access::make_database(graph_list_ptr graphs, const labels &known) {
  return database(std::make_shared<const database::state>(
      database::state{std::move(graphs), known}));
}

const graph_list *access::transactions(const database &db) {
  return db.state_->graphs.get();
}

const kestro::label_set *access::label_set(const database &db) {
  return label_set(db.state_->known);
}

database::database()
    : database(access::make_database(graph_list_ptr(graph_list_new()), {})) {}

static database read_database(const file_text &text, const labels &known) {
  graph_list_ptr graphs(
      graph_read_transactions(text, access::label_set(known)));
  return access::make_database(std::move(graphs), known);
}

static database read_database(const file_text &text) {
  label_set_ptr ls(label_set_create());
  graph_list_ptr graphs(graph_read_with_labels(text, ls.get()));
  return access::make_database(std::move(graphs),
                               access::make_labels(std::move(ls)));
}

database database::read(const std::string &path) {
  return read_database(read_file(checked_path(path)));
}

database database::read(const std::string &path, const labels &known) {
  return read_database(read_file(checked_path(path)), known);
}

database database::parse(std::string_view text, const std::string &name) {
  return read_database(copy_text(text, name));
}

database database::parse(std::string_view text, const labels &known,
                         const std::string &name) {
  return read_database(copy_text(text, name), known);
}

int database::size() const { return state_->graphs->count; }

graph_view database::operator[](int tid) const {
  check_index("graph", tid, size());
  return access::view(graph_list_at(state_->graphs.get(), tid),
                      access::label_set(state_->known));
}

const labels &database::label_set() const { return state_->known; }

} // namespace kestro
