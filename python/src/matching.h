// Matching for Python.
#pragma once

#include <nanobind/nanobind.h>

namespace kestro_python {

// Adds the class LatticeMatcher, a kestro::lattice_matcher over the patterns of
// a database, and the function embeddings.
void bind_matching(nanobind::module_ &m);

} // namespace kestro_python
