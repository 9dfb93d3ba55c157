// Graphs as vectors of labels and edges, and everything done by trying.
//
// A map is found by placing the pattern's vertices one after the other, in an
// order in which each but the first hangs on an earlier one, on every unused
// vertex of the target that has the right label and the right edges to the
// vertices placed before.  That is exponential, which is fine for the ten
// vertices that tests use, and leaves little to get wrong.

#include "support/plain_graph.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <stdexcept>

namespace kestro {

namespace {

// n x n cells, row by row: the index of the edge between two vertices, or -1.
struct edge_table {
  explicit edge_table(const plain_graph &g)
      : n(g.vertices.size()), cells(n * n, -1) {
    for (size_t i = 0; i < g.edges.size(); i++) {
      at(g.edges[i].from, g.edges[i].to) = static_cast<int>(i);
      at(g.edges[i].to, g.edges[i].from) = static_cast<int>(i);
    }
  }
  int &at(int u, int w) {
    return cells[static_cast<size_t>(u) * n + static_cast<size_t>(w)];
  }
  int at(int u, int w) const {
    return cells[static_cast<size_t>(u) * n + static_cast<size_t>(w)];
  }
  size_t n;
  std::vector<int> cells;
};

std::vector<int> degrees(const plain_graph &g) {
  std::vector<int> degree(g.vertices.size(), 0);
  for (const plain_edge &edge : g.edges) {
    degree[static_cast<size_t>(edge.from)]++;
    degree[static_cast<size_t>(edge.to)]++;
  }
  return degree;
}

// The search for maps of one pattern into one target.
struct map_search {
  map_search(const plain_graph &p, const plain_graph &t, bool exact_degrees)
      : pattern(p), target(t), pattern_edge(p), target_edge(t),
        pattern_degree(degrees(p)), target_degree(degrees(t)),
        exact(exact_degrees), map(p.vertices.size(), -1),
        used(t.vertices.size(), false) {
    set_order();
  }

  void set_order() {
    const int n = static_cast<int>(pattern.vertices.size());
    std::vector<bool> seen(pattern.vertices.size(), false);
    for (int next = 0; next < n; next++) {
      if (order.size() == static_cast<size_t>(next)) {
        order.push_back(next);
        seen[static_cast<size_t>(next)] = true;
      }
      const int u = order[static_cast<size_t>(next)];
      for (int w = 0; w < n; w++)
        if (pattern_edge.at(u, w) >= 0 && !seen[static_cast<size_t>(w)]) {
          order.push_back(w);
          seen[static_cast<size_t>(w)] = true;
        }
    }
  }

  bool fits(int u, int w) const {
    const size_t pu = static_cast<size_t>(u), tw = static_cast<size_t>(w);
    if (used[tw] || pattern.vertices[pu] != target.vertices[tw])
      return false;
    if (exact ? pattern_degree[pu] != target_degree[tw]
              : pattern_degree[pu] > target_degree[tw])
      return false;
    for (size_t x = 0; x < map.size(); x++) {
      const int edge = pattern_edge.at(u, static_cast<int>(x));
      if (edge < 0 || map[x] < 0)
        continue;
      const int image = target_edge.at(w, map[x]);
      if (image < 0 || pattern.edges[static_cast<size_t>(edge)].label !=
                           target.edges[static_cast<size_t>(image)].label)
        return false;
    }
    return true;
  }

  // Collects the maps that extend the first depth choices; true ends the
  // search after the first one.
  bool search(size_t depth, bool first_only) {
    if (depth == order.size()) {
      found.push_back(map);
      return first_only;
    }
    const int u = order[depth];
    for (int w = 0; w < static_cast<int>(used.size()); w++) {
      if (!fits(u, w))
        continue;
      map[static_cast<size_t>(u)] = w;
      used[static_cast<size_t>(w)] = true;
      const bool done = search(depth + 1, first_only);
      map[static_cast<size_t>(u)] = -1;
      used[static_cast<size_t>(w)] = false;
      if (done)
        return true;
    }
    return false;
  }

  const plain_graph &pattern, &target;
  edge_table pattern_edge, target_edge;
  std::vector<int> pattern_degree, target_degree;
  bool exact;
  std::vector<int> order;
  plain_map map;
  std::vector<bool> used;
  std::vector<plain_map> found;
};

// The lines of one transaction, whose edges may precede their ends.
struct open_transaction {
  plain_graph graph;
  std::map<int, int> index_of; // vertex id to index
  struct edge_line {
    int from_id, to_id;
    std::string label;
  };
  std::vector<edge_line> edge_lines;

  plain_graph finish() const {
    plain_graph g = graph;
    for (const edge_line &line : edge_lines) {
      if (!index_of.count(line.from_id) || !index_of.count(line.to_id))
        throw std::runtime_error("an edge without its ends");
      g.edges.push_back(
          {index_of.at(line.from_id), index_of.at(line.to_id), line.label});
    }
    return g;
  }
};

void read_vertex(std::istringstream *words, open_transaction *out) {
  int id = 0;
  std::string label;
  *words >> id >> label;
  if (label.empty())
    throw std::runtime_error("a vertex line without label");
  out->index_of.emplace(id, static_cast<int>(out->graph.vertices.size()));
  out->graph.vertices.push_back(label);
}

void read_edge(std::istringstream *words, open_transaction *out) {
  open_transaction::edge_line line{0, 0, ""};
  *words >> line.from_id >> line.to_id >> line.label;
  if (line.label.empty())
    throw std::runtime_error("an edge line without label");
  out->edge_lines.push_back(line);
}

} // namespace

std::vector<plain_graph> plain_read(const std::string &text,
                                    std::vector<std::string> *headers) {
  std::vector<open_transaction> transactions;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    char kind = 0;
    words >> kind;
    if (kind == '#' || kind == '%')
      continue;
    if (kind == 't') {
      transactions.emplace_back();
      headers->push_back(line);
    } else if (kind == 'v' && !transactions.empty()) {
      read_vertex(&words, &transactions.back());
    } else if ((kind == 'u' || kind == 'd' || kind == 'e') &&
               !transactions.empty()) {
      read_edge(&words, &transactions.back());
    } else {
      throw std::runtime_error("no line of a transaction file: " + line);
    }
  }
  std::vector<plain_graph> graphs;
  graphs.reserve(transactions.size());
  for (const open_transaction &transaction : transactions)
    graphs.push_back(transaction.finish());
  return graphs;
}

std::vector<plain_graph> plain_read(const std::string &text) {
  std::vector<std::string> headers;
  return plain_read(text, &headers);
}

std::string plain_text(const plain_graph &g) {
  std::ostringstream text;
  for (size_t i = 0; i < g.vertices.size(); i++)
    text << "v " << i << ' ' << g.vertices[i] << '\n';
  for (const plain_edge &edge : g.edges)
    text << "u " << edge.from << ' ' << edge.to << ' ' << edge.label << '\n';
  return text.str();
}

plain_graph plain_part(const plain_graph &g, uint32_t keep) {
  std::vector<int> index(g.vertices.size(), -1);
  for (size_t i = 0; i < g.edges.size(); i++)
    if (keep >> i & 1) {
      index[static_cast<size_t>(g.edges[i].from)] = 0;
      index[static_cast<size_t>(g.edges[i].to)] = 0;
    }
  plain_graph part;
  for (size_t i = 0; i < g.vertices.size(); i++)
    if (index[i] == 0) {
      index[i] = static_cast<int>(part.vertices.size());
      part.vertices.push_back(g.vertices[i]);
    }
  for (size_t i = 0; i < g.edges.size(); i++)
    if (keep >> i & 1)
      part.edges.push_back({index[static_cast<size_t>(g.edges[i].from)],
                            index[static_cast<size_t>(g.edges[i].to)],
                            g.edges[i].label});
  return part;
}

bool plain_part_connected(const plain_graph &g, uint32_t keep) {
  uint32_t reached = keep & (~keep + 1); // the lowest kept edge
  for (bool grown = true; grown;) {
    grown = false;
    for (size_t i = 0; i < g.edges.size(); i++) {
      if (!(keep >> i & 1) || (reached >> i & 1))
        continue;
      for (size_t j = 0; j < g.edges.size(); j++) {
        const plain_edge &a = g.edges[i], &b = g.edges[j];
        if ((reached >> j & 1) && (a.from == b.from || a.from == b.to ||
                                   a.to == b.from || a.to == b.to)) {
          reached |= uint32_t{1} << i;
          grown = true;
          break;
        }
      }
    }
  }
  return reached == keep;
}

bool plain_delete(const plain_graph &g, size_t i, plain_graph *rest) {
  const uint32_t all = (uint32_t{1} << g.edges.size()) - 1;
  const uint32_t keep = all & ~(uint32_t{1} << i);
  if (keep == 0 || !plain_part_connected(g, keep))
    return false;
  *rest = plain_part(g, keep);
  return true;
}

std::string plain_invariant(const plain_graph &g) {
  std::vector<std::vector<std::string>> around(g.vertices.size());
  for (const plain_edge &edge : g.edges) {
    const size_t from = static_cast<size_t>(edge.from);
    const size_t to = static_cast<size_t>(edge.to);
    around[from].push_back(edge.label + '-' + g.vertices[to]);
    around[to].push_back(edge.label + '-' + g.vertices[from]);
  }
  std::vector<std::string> cells(g.vertices.size());
  for (size_t i = 0; i < cells.size(); i++) {
    std::sort(around[i].begin(), around[i].end());
    cells[i] = g.vertices[i] + ':';
    for (const std::string &neighbour : around[i])
      cells[i] += neighbour + ' ';
  }
  std::sort(cells.begin(), cells.end());
  std::string all;
  for (const std::string &cell : cells)
    all += cell + ';';
  return all;
}

std::vector<plain_map> plain_maps(const plain_graph &pattern,
                                  const plain_graph &target) {
  map_search search(pattern, target, false);
  search.search(0, false);
  std::sort(search.found.begin(), search.found.end());
  return search.found;
}

bool plain_isomorphic(const plain_graph &a, const plain_graph &b) {
  if (a.vertices.size() != b.vertices.size() ||
      a.edges.size() != b.edges.size())
    return false;
  // With as many edges on either side, a map that keeps edges is onto them.
  map_search search(a, b, true);
  return search.search(0, true);
}

} // namespace kestro
