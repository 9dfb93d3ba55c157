// Label sets for tests, in and out of vectors.
#pragma once

#include <string>
#include <vector>

#include "graph/label_set.h"

namespace kestro {

inline label_set_ptr label_set_of(const std::vector<std::string> &edge_labels,
                                  const std::vector<std::string> &vlabels) {
  label_set_ptr ls(label_set_create());
  for (const std::string &s : edge_labels)
    label_set_add_edge_label(ls.get(), s.c_str());
  for (const std::string &s : vlabels)
    label_set_add_vertex_label(ls.get(), s.c_str());
  return ls;
}

// The labels of either kind by id.
inline std::vector<std::string> edge_labels_of(const label_set_ptr &ls) {
  std::vector<std::string> labels;
  for (int i = 0; i < label_set_edge_labels(ls.get()); i++)
    labels.push_back(label_set_edge_label(ls.get(), i));
  return labels;
}
inline std::vector<std::string> vertex_labels_of(const label_set_ptr &ls) {
  std::vector<std::string> labels;
  for (int i = 0; i < label_set_vertex_labels(ls.get()); i++)
    labels.push_back(label_set_vertex_label(ls.get(), i));
  return labels;
}

} // namespace kestro
