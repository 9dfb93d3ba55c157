// Where a pattern occurs in any graph.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include <kestro/database.h>
#include <kestro/export.h>
#include <kestro/graph_view.h>
#include <kestro/mine.h>

namespace kestro {

// Per vertex of the pattern, the graph's vertex that it lies on.
using embedding = std::vector<int>;

// One connected pattern, prepared for being looked for in many graphs: of the
// database, of another one, with labels that this one does not know.  A graph
// that belongs to none is built as a database of one graph.  Labels are
// compared by their texts.  An embedding maps vertices to different vertices of
// the same label, and edges onto edges of the same label; the graph may have
// further edges between them.  Embeddings come in lexicographic order along
// order().
class KESTRO_API matcher {
public:
  // Copies the pattern.  Throws error when it is not connected or has no
  // vertex.
  explicit matcher(graph_view pattern);
  matcher(const matcher &) = default; // and no move, as for labels
  matcher &operator=(const matcher &) = default;

  bool is_in(graph_view g) const;
  // The first embedding, nothing when there is none.
  std::optional<embedding> first(graph_view g) const;
  // All embeddings, or the first most of them; all for a negative number.
  std::vector<embedding> all(graph_view g, long long most = -1) const;
  // Hands all embeddings over, each until the call returns, as long as take
  // returns true.  What take throws ends the search.
  void each(graph_view g,
            const std::function<bool(const embedding &)> &take) const;
  // How many there are.  Leaves of one vertex that look alike are counted by
  // the sets of places that they take, not by the orders in them.  Throws error
  // where a long long does not hold the count.
  long long count(graph_view g) const;
  // The pattern's vertices breadth first from vertex 0, neighbours ascending.
  const std::vector<int> &order() const;

private:
  struct state;
  std::shared_ptr<const state> state_;
};

// Many patterns at once.  A pattern is not looked for where one of its parents
// is missing.
class KESTRO_API lattice_matcher {
public:
  // Those of a result.
  explicit lattice_matcher(const result &patterns);
  // Those of a database: connected graphs of at least one vertex.  The parents
  // of pattern i are parents[first_parents[i]] up to
  // parents[first_parents[i + 1]]: patterns before i that it contains, as many
  // of them as are known.  That they are in it is not checked.  Throws error
  // for a pattern or a parent that is none.
  lattice_matcher(const database &patterns,
                  std::span<const int64_t> first_parents,
                  std::span<const int> parents);
  lattice_matcher(const lattice_matcher &) = default;
  lattice_matcher &operator=(const lattice_matcher &) = default;

  // The positions of the patterns that occur in g, ascending.
  std::vector<int> contained(graph_view g) const;

private:
  struct state;
  std::shared_ptr<const state> state_;
};

} // namespace kestro
