// The levels of small databases as the product mines them, for tests of what
// happens between two levels.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "graph/graph_list.h"
#include "mining/candidates.h"
#include "mining/first_levels.h"
#include "mining/support.h"
#include "reference/cl/canonical_calls.h"
#include "reference/mining/subgraph.h"
#include "support/count_level.h"
#include "support/graphs.h"
#include "support/plain_graph.h"

namespace kestro {

// A plain database with numbers for its labels, from 0 in their order.
struct numbered_database {
  graph_list_ptr transactions;
  int edge_labels;
  int vertex_labels;
};

inline std::map<std::string, int>
numbers_of(const std::vector<std::string> &labels) {
  std::map<std::string, int> numbers;
  for (const std::string &label : labels)
    numbers[label] = 0;
  int next = 0;
  for (auto &entry : numbers)
    entry.second = next++;
  return numbers;
}

inline numbered_database number(const std::vector<plain_graph> &database) {
  std::vector<std::string> of_vertices;
  std::vector<std::string> of_edges;
  for (const plain_graph &t : database) {
    of_vertices.insert(of_vertices.end(), t.vertices.begin(), t.vertices.end());
    for (const plain_edge &edge : t.edges)
      of_edges.push_back(edge.label);
  }
  const std::map<std::string, int> vertex_number = numbers_of(of_vertices);
  const std::map<std::string, int> edge_number = numbers_of(of_edges);
  graph_list_ptr list(graph_list_new());
  for (const plain_graph &t : database) {
    std::vector<int> vlabels;
    for (const std::string &label : t.vertices)
      vlabels.push_back(vertex_number.at(label));
    std::vector<test_edge> edges;
    for (const plain_edge &edge : t.edges)
      edges.push_back({edge.from, edge.to, edge_number.at(edge.label)});
    graph_list_push(make_graph(vlabels, edges), list.get());
  }
  return {std::move(list), static_cast<int>(edge_number.size()),
          static_cast<int>(vertex_number.size())};
}

// Two levels that follow one another: cores, and children one edge larger.
struct two_levels {
  sg_set_ptr cores;
  sg_set_ptr children;
};

inline two_levels first_two_levels(const graph_list *transactions, int minsup,
                                   int edge_labels, int vertex_labels) {
  two_levels levels;
  levels.cores.reset(
      sg_frequent_edges(transactions, minsup, edge_labels, vertex_labels));
  levels.children.reset(sg_frequent_double_edges(
      levels.cores.get(), transactions, minsup, edge_labels, vertex_labels));
  sg_register_children(levels.children.get(), levels.cores.get());
  return levels;
}

inline core_links links_of(const two_levels &levels) {
  return {levels.cores.get(), levels.children.get()};
}

// The candidates that the product makes of two levels, under the threshold of
// this thread.
inline sg_set_ptr candidates_of(const two_levels &levels, int jobs = 1,
                                form kind = form::prescribed) {
  return sg_generate_candidates(
             levels.children.get(), levels.cores.get(),
             {.jobs = jobs,
              .stabilizer_threshold = cl_get_stabilizer_threshold(),
              .kind = kind})
      .candidates;
}

// The next level in place of the older one; made are its candidates.
inline void go_up(two_levels *levels, sg_set_ptr made,
                  const graph_list *transactions, int minsup) {
  sg_filter_candidates_by_support(made.get(), levels->children.get(),
                                  transactions, minsup);
  levels->cores = std::move(levels->children);
  levels->children.reset(
      count_level(made.release(), levels->cores.get(), transactions, minsup));
}

// Mines the patterns in minsup transactions and calls visit(levels, candidates)
// with all pairs of levels and the candidates that the product makes of them.
template <class Visit>
void visit_levels(const numbered_database &db, int minsup, Visit visit,
                  form kind = form::prescribed) {
  two_levels levels = first_two_levels(db.transactions.get(), minsup,
                                       db.edge_labels, db.vertex_labels);
  while (sg_set_size(levels.children.get()) > 0) {
    sg_set_ptr made = candidates_of(levels, 1, kind);
    visit(levels, made.get());
    go_up(&levels, std::move(made), db.transactions.get(), minsup);
  }
}

} // namespace kestro
