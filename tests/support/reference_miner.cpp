// The miner as one would explain it: take every set of edges of every
// transaction, keep the connected ones, sort them into classes of isomorphic
// graphs, and count the transactions of each class.
//
// A class is found by comparing a graph with every class that shares its
// invariant.  Listing costs 2^edges per transaction.

#include "support/reference_miner.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <tuple>

namespace kestro {

int class_find(const class_table &table, const plain_graph &g) {
  const auto bucket = table.buckets.find(plain_invariant(g));
  if (bucket == table.buckets.end())
    return -1;
  for (const int number : bucket->second)
    if (plain_isomorphic(table.classes[static_cast<size_t>(number)].graph, g))
      return number;
  return -1;
}

int class_add(class_table *table, const plain_graph &g) {
  const int known = class_find(*table, g);
  if (known >= 0)
    return known;
  const int number = static_cast<int>(table->classes.size());
  table->classes.push_back({g, static_cast<int>(g.edges.size()), {}});
  table->buckets[plain_invariant(g)].push_back(number);
  return number;
}

static void add_transaction(class_table *table, const plain_graph &g, int tid,
                            int max_edges) {
  if (g.edges.size() > reference_edge_limit)
    throw std::runtime_error("too many edges to list all subgraphs");
  const uint32_t end = uint32_t{1} << g.edges.size();
  for (uint32_t keep = 1; keep < end; keep++) {
    if (__builtin_popcount(keep) > max_edges || !plain_part_connected(g, keep))
      continue;
    const int number = class_add(table, plain_part(g, keep));
    std::vector<int> &tids = table->classes[static_cast<size_t>(number)].tids;
    if (tids.empty() || tids.back() != tid)
      tids.push_back(tid);
  }
}

class_table reference_classes(const std::vector<plain_graph> &database,
                              int max_edges) {
  class_table table;
  for (size_t tid = 0; tid < database.size(); tid++)
    add_transaction(&table, database[tid], static_cast<int>(tid), max_edges);
  return table;
}

int reference_min_count(double support, int transactions) {
  const long double share = static_cast<long double>(support) / 100.0L;
  const int count = static_cast<int>(share * transactions + 0.5L);
  return std::max(1, std::min(count, transactions));
}

size_lists reference_frequent(const class_table &table, int min_count) {
  size_lists lists(1);
  for (size_t i = 0; i < table.classes.size(); i++) {
    const pattern_class &c = table.classes[i];
    if (static_cast<int>(c.tids.size()) < min_count)
      continue;
    if (lists.size() <= static_cast<size_t>(c.size))
      lists.resize(static_cast<size_t>(c.size) + 1);
    lists[static_cast<size_t>(c.size)].push_back(static_cast<int>(i));
  }
  return lists;
}

std::vector<int> reference_parents(const class_table &table,
                                   const plain_graph &g) {
  std::set<int> parents;
  plain_graph rest;
  for (size_t i = 0; i < g.edges.size(); i++)
    if (plain_delete(g, i, &rest))
      parents.insert(class_find(table, rest));
  return {parents.begin(), parents.end()};
}

namespace {

// Labels of an edge and of its ends, in either order.
using edge_kind = std::tuple<std::string, std::string, std::string>;

// Tries new graphs: those whose parents are all frequent become candidates.
struct candidate_filter {
  const class_table &table;
  std::vector<bool> frequent; // by class number
  std::set<std::string> seen; // texts of graphs tried
  class_table accepted;

  void offer(const plain_graph &g) {
    if (!seen.insert(plain_text(g)).second)
      return;
    plain_graph rest;
    for (size_t i = 0; i < g.edges.size(); i++) {
      if (!plain_delete(g, i, &rest))
        continue;
      const int parent = class_find(table, rest);
      if (parent < 0 || !frequent[static_cast<size_t>(parent)])
        return;
    }
    class_add(&accepted, g);
  }
};

bool has_edge(const plain_graph &g, int u, int w) {
  return std::any_of(g.edges.begin(), g.edges.end(), [=](const plain_edge &e) {
    return (e.from == u && e.to == w) || (e.from == w && e.to == u);
  });
}

// A candidate's every edge is frequent by itself, so only such edges are
// added.  The kinds come in both directions.
std::set<edge_kind> frequent_kinds(const class_table &table,
                                   const std::vector<int> &one_edge) {
  std::set<edge_kind> kinds;
  for (const int number : one_edge) {
    const plain_graph &g = table.classes[static_cast<size_t>(number)].graph;
    kinds.insert({g.vertices[0], g.edges[0].label, g.vertices[1]});
    kinds.insert({g.vertices[1], g.edges[0].label, g.vertices[0]});
  }
  return kinds;
}

void offer_extensions(const plain_graph &g, const std::set<edge_kind> &kinds,
                      candidate_filter *filter) {
  const int n = static_cast<int>(g.vertices.size());
  for (const auto &[near_label, edge_label, far_label] : kinds)
    for (int u = 0; u < n; u++) {
      if (g.vertices[static_cast<size_t>(u)] != near_label)
        continue;
      plain_graph pendant = g;
      pendant.vertices.push_back(far_label);
      pendant.edges.push_back({u, n, edge_label});
      filter->offer(pendant);
      for (int w = u + 1; w < n; w++) {
        if (g.vertices[static_cast<size_t>(w)] != far_label ||
            has_edge(g, u, w))
          continue;
        plain_graph closed = g;
        closed.edges.push_back({u, w, edge_label});
        filter->offer(closed);
      }
    }
}

} // namespace

class_table reference_candidates(const class_table &table,
                                 const size_lists &frequent, int k) {
  candidate_filter filter{
      table, std::vector<bool>(table.classes.size(), false), {}, {}};
  if (static_cast<size_t>(k) > frequent.size())
    return filter.accepted;
  const std::vector<int> &smaller = frequent[static_cast<size_t>(k) - 1];
  for (const int number : smaller)
    filter.frequent[static_cast<size_t>(number)] = true;
  const std::set<edge_kind> kinds = frequent_kinds(table, frequent[1]);
  for (const int number : smaller)
    offer_extensions(table.classes[static_cast<size_t>(number)].graph, kinds,
                     &filter);
  return filter.accepted;
}

std::vector<int> reference_maximal(const class_table &table,
                                   const size_lists &frequent, int min_size,
                                   int max_size) {
  std::set<int> maximal;
  const int largest = std::min(max_size, static_cast<int>(frequent.size()) - 1);
  for (int k = min_size; k <= largest; k++) {
    const std::vector<int> &level = frequent[static_cast<size_t>(k)];
    maximal.insert(level.begin(), level.end());
    for (const int number : level)
      for (const int parent : reference_parents(
               table, table.classes[static_cast<size_t>(number)].graph))
        maximal.erase(parent);
  }
  return {maximal.begin(), maximal.end()};
}

} // namespace kestro
