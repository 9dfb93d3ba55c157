// Labelled graphs the slow and obvious way, for tests that compare kestro with
// an independent opinion: nothing here uses the library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kestro {

struct plain_edge {
  int from;          // index of one end
  int to;            // index of the other
  std::string label; // no white space
};

// An undirected graph without loops and without parallel edges.
struct plain_graph {
  std::vector<std::string> vertices; // label of each vertex
  std::vector<plain_edge> edges;
};

// map[i] is the target vertex of pattern vertex i.
using plain_map = std::vector<int>;

// The graphs of a transaction file's text, one per "t" line.  Lines of other
// kinds than t, v, u, d, e, # and % throw std::runtime_error, and so do edges
// without ends.  The second form also hands out the "t" lines.
std::vector<plain_graph> plain_read(const std::string &text);
std::vector<plain_graph> plain_read(const std::string &text,
                                    std::vector<std::string> *headers);
// The vertex and edge lines of g.
std::string plain_text(const plain_graph &g);

// The edges whose bit is set in keep and the vertices that keep an edge, both
// in their old order.
plain_graph plain_part(const plain_graph &g, uint32_t keep);
// Whether the kept edges hang together; so do no edges and one edge.
bool plain_part_connected(const plain_graph &g, uint32_t keep);

// g without its i-th edge, and without an end that only this edge held, in
// rest; false when that is nothing or falls apart.
bool plain_delete(const plain_graph &g, size_t i, plain_graph *rest);

// A text that isomorphic graphs share: how often each neighbourhood occurs.
std::string plain_invariant(const plain_graph &g);

// Every map of the connected pattern into target that keeps labels and edges;
// target may have more edges.  Ascending in the images of vertex 0, 1, ...
std::vector<plain_map> plain_maps(const plain_graph &pattern,
                                  const plain_graph &target);
// Whether connected a and b are the same graph but for the vertex order.
bool plain_isomorphic(const plain_graph &a, const plain_graph &b);

} // namespace kestro
