// Dense counting tables indexed by labels.
#pragma once

#include <cstddef>

#include "base/xmalloc.h"

namespace kestro {

// Counters of one-edge patterns: [la][lb][e], la <= lb.
class edge_table {
public:
  edge_table(int nel, int nvl);
  int &at(int la, int lb, int e) {
    return cells_.get()[(index(la) * nvl_ + index(lb)) * nel_ + index(e)];
  }

private:
  static size_t index(int label) { return static_cast<size_t>(label); }
  size_t nel_;
  size_t nvl_;
  xptr<int> cells_; // nvl * nvl * nel
};

// Counters of two-edge patterns: [va][vb][vc][ea][eb], ends va <= vb, centre
// vc; when va = vb, ea <= eb.
class double_edge_table {
public:
  double_edge_table(int nel, int nvl);
  int &at(int va, int vb, int vc, int ea, int eb) {
    const size_t labels = (index(va) * nvl_ + index(vb)) * nvl_ + index(vc);
    return cells_.get()[(labels * nel_ + index(ea)) * nel_ + index(eb)];
  }

private:
  static size_t index(int label) { return static_cast<size_t>(label); }
  size_t nel_;
  size_t nvl_;
  xptr<int> cells_; // nvl^3 * nel^2
};

} // namespace kestro
