// Graphs as the text of a transaction file, labels as their numbers.
#pragma once

#include <string>
#include <vector>

#include "support/graphs.h"

namespace kestro {

inline std::string transaction_text(const std::vector<graph_ptr> &database) {
  std::string text;
  for (const graph_ptr &g : database) {
    text += "t\n";
    for (int i = 0; i < g->vs; i++)
      text +=
          "v " + std::to_string(i) + " " + std::to_string(g->vlabel[i]) + "\n";
    for (const test_edge &edge : edges_of(g.get()))
      text += "u " + std::to_string(edge.u) + " " + std::to_string(edge.w) +
              " " + std::to_string(edge.label) + "\n";
  }
  return text;
}

} // namespace kestro
