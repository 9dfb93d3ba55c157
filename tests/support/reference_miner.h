// What kestro should find, by listing every connected subgraph of every
// transaction.  Shares no code with the library; for databases of transactions
// with at most reference_edge_limit edges.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "support/plain_graph.h"

namespace kestro {

constexpr int reference_edge_limit = 14;

// All connected graphs that are isomorphic to one.
struct pattern_class {
  plain_graph graph;     // the member met first
  int size;              // its edges
  std::vector<int> tids; // transactions that contain it, ascending
};

// Classes by number, in the order in which they were met.
struct class_table {
  std::vector<pattern_class> classes;
  // Numbers of the classes that share an invariant.
  std::unordered_map<std::string, std::vector<int>> buckets;
};

// The number of g's class, or -1; the second form makes a new class if needed.
int class_find(const class_table &table, const plain_graph &g);
int class_add(class_table *table, const plain_graph &g);

// The classes of all connected subgraphs with 1 .. max_edges edges.
class_table reference_classes(const std::vector<plain_graph> &database,
                              int max_edges);
// The least number of transactions that makes support per cent of them.
int reference_min_count(double support, int transactions);

// Class numbers by size: [k] lists the classes with k edges that occur in at
// least min_count transactions.  Index 0 is empty and the last one not.
using size_lists = std::vector<std::vector<int>>;
size_lists reference_frequent(const class_table &table, int min_count);

// The classes of g's connected subgraphs of one edge less, ascending; -1 is
// among them if there is one that table does not know.
std::vector<int> reference_parents(const class_table &table,
                                   const plain_graph &g);
// The graphs of k >= 3 edges, frequent or not, whose connected subgraphs of
// k-1 edges are all frequent; one of each class.
class_table reference_candidates(const class_table &table,
                                 const size_lists &frequent, int k);
// Of the frequent classes with min_size .. max_size edges those that are no
// parent of one with as many edges and one more, ascending.
std::vector<int> reference_maximal(const class_table &table,
                                   const size_lists &frequent, int min_size,
                                   int max_size);

} // namespace kestro
