// Isomorphism of small labelled graphs by nauty's canonical labelling.
#pragma once

#include <cstdint>
#include <vector>

#include "support/graphs.h"

namespace kestro {

using certificate = std::vector<uint64_t>;

// Equal for two graphs exactly when they are isomorphic.  Labels are not
// negative; the vertices and the edges with another label than 0 are 64 at
// most.
certificate certificate_of(const std::vector<int> &vlabels,
                           const std::vector<test_edge> &edges);

} // namespace kestro
