// Small databases of graphs in which many vertices look alike.
#pragma once

#include <vector>

#include "support/random_database.h"

namespace kestro {

// One to three transactions of up to max_edges edges: circulants, stars,
// spiders, hubs in a row, complete and complete bipartite graphs, products of
// paths and rings, and copies of such side by side.  Most have one label, some
// others by distance or by kind of edge, some a leaf more.  max_edges is 8 at
// least.
std::vector<plain_graph> symmetric_database(dice *chance, int max_edges);

} // namespace kestro
