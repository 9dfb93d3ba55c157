// Mining for Python.
#pragma once

#include <nanobind/nanobind.h>

namespace kestro_python {

// Adds the functions mine and mine_known, which run the library's and pack what
// they find into arrays.
void bind_mine(nanobind::module_ &m);

} // namespace kestro_python
