// The labels of a transaction file by its name.
#pragma once

#include "graph/label_set.h"

namespace kestro {

// Reads the file and adds its labels.
void label_set_build(const char *file, label_set *ls);

} // namespace kestro
