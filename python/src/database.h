// Databases for Python.
#pragma once

#include <nanobind/nanobind.h>

namespace kestro_python {

// Adds the class Database, a kestro::database made from files, bytes or packed
// arrays.
void bind_database(nanobind::module_ &m);

} // namespace kestro_python
