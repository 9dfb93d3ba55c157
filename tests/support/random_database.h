// Small random databases that are the same on every machine, as text and as
// graphs, and the search for the smallest one that still shows a failure.
#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "support/plain_graph.h"

namespace kestro {

// Chance without the library's distributions, whose results differ between
// implementations.
class dice {
public:
  explicit dice(uint64_t seed) : engine_(seed) {}
  // One of 0 .. n-1.
  int below(int n);
  int between(int low, int high) { return low + below(high - low + 1); }
  bool one_in(int n) { return below(n) == 0; }

private:
  std::mt19937_64 engine_;
};

// Legal ways to write a transaction that nobody would choose.
struct text_style {
  bool odd_ids;     // vertex ids with gaps, descending
  bool edges_first; // edge lines before the vertex lines of their ends
  bool comments;    // "#" and "%" lines in between
  bool mixed_kinds; // "e", "d" and capital letters, ends in either order
};

// A database: 3 to 12 transactions of up to max_edges edges out of 1 to 3
// vertex and edge labels; sparse, trees, rings, cliques and disconnected ones,
// many of them variations of one another.
std::vector<plain_graph> random_database(dice *chance, int max_edges);
text_style random_style(dice *chance);

// The transaction file.
std::string database_text(const std::vector<plain_graph> &database,
                          const text_style &style);

// Drops transactions, then edges, then vertices for as long as fails() stays
// true, which it must be at the start.
using database_test = std::function<bool(const std::vector<plain_graph> &)>;
std::vector<plain_graph> shrink_database(std::vector<plain_graph> database,
                                         const database_test &fails);

} // namespace kestro
