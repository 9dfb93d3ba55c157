// What the benchmarks work on: drawn graphs, a database, its first levels.
#pragma once

#include <random>
#include <string>
#include <string_view>

#include "base/xmalloc.h"
#include "graph/graph_list.h"
#include "graph/label_set.h"
#include "mining/sg_set.h"

namespace kestro {

// The one source of chance; each input is drawn from a seed of its own, and
// the same on every machine.
using generator = std::mt19937;
// A number in 0..n-1.
int draw_below(generator &draw, int n);

// A connected graph before it is laid out.
struct sketch {
  struct edge {
    int u, v, label;
  };
  xvector<int> vlabels;
  xvector<edge> edges;
};

// Chains with branches and rings of five or six, at most four neighbours each,
// mostly vertex label 0 of 0..5 and edge label 0 of 0..2.
sketch draw_molecule(generator &draw, int vertices);
// Unlabelled from here on.
sketch draw_tree(generator &draw, int vertices);
sketch make_ring(int vertices);
sketch make_hypercube(int dimension);
sketch make_complete(int vertices);
sketch make_star(int leaves);
sketch make_bipartite(int left, int right); // complete
sketch make_grid(int rows, int columns);
// But this one: a chain of hubs, each with a label of its own and with leaves
// of one label.
sketch make_hubs(int hubs, int leaves);

// A new graph whose vertices stand in a drawn order.
graph_ptr lay_out(const sketch &s, generator &draw);

// A transaction file and what is read from it.
class loaded_file {
public:
  // Reads name, or, when it is empty, a file of molecules that is written here
  // and lasts as long as this.
  explicit loaded_file(const std::string &name);
  ~loaded_file();
  loaded_file(const loaded_file &) = delete;
  loaded_file &operator=(const loaded_file &) = delete;

  const std::string &file() const { return file_; }
  const label_set *labels() const { return labels_.get(); }
  const graph_list *transactions() const { return transactions_.get(); }

private:
  std::string file_;
  bool drawn_; // file_ is ours to remove
  label_set_ptr labels_;
  graph_list_ptr transactions_;
};

// The search at the point where the candidates of a size are known.
struct search_levels {
  sg_set_ptr cores;      // frequent patterns of size k-2
  sg_set_ptr children;   // frequent patterns of size k-1
  sg_set_ptr candidates; // all that passed the closure test, size k
};

// Mines db with the minimum support of a tenth of its transactions up to the
// candidates of size k >= 3.  Dies when there are none.
search_levels mine_until(const loaded_file &db, int k);

} // namespace kestro
