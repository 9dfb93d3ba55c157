// The distinct labels of a database.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <kestro/export.h>

namespace kestro {

// Vertex labels and edge labels, each kind in ascending byte order without
// repeats; a label's id is its position.  Immutable; copies share one set.
class KESTRO_API labels {
public:
  labels();                         // none
  labels(const labels &) = default; // and no move: what was copied from stays
  labels &operator=(const labels &) = default;

  // Those of all transactions of a file, or of a label file as the program
  // writes it with --save-labels.  Throws error as database::read does.
  static labels of_transactions(const std::string &path);
  static labels of_label_file(const std::string &path);
  // Those given, in any order and with repeats.  Throws error for one that no
  // file can hold (label_rule::readable).
  static labels of_texts(std::span<const std::string_view> vertex_labels,
                         std::span<const std::string_view> edge_labels);

  int vertex_labels() const; // how many
  int edge_labels() const;
  // The text of an id, which lives as long as a copy of this.  Throws error for
  // an id out of range.
  std::string_view vertex_label(int id) const;
  std::string_view edge_label(int id) const;
  // The id of a text, nothing when it is no label.  Costs a binary search.
  std::optional<int> find_vertex_label(std::string_view label) const;
  std::optional<int> find_edge_label(std::string_view label) const;

private:
  friend struct access;
  struct state;
  explicit labels(std::shared_ptr<const state> s);
  std::shared_ptr<const state> state_;
};

} // namespace kestro
