// Mining for Python.
#pragma once

#include <nanobind/nanobind.h>

namespace kestro_python {

// Adds the function mine, which runs kestro::mine and packs what it finds into
// arrays.
void bind_mine(nanobind::module_ &m);

} // namespace kestro_python
