// Which canonical form patterns are brought into.
#pragma once

namespace kestro {

enum class form {
  prescribed, // that of the program's files; depends on the incoming order of
              // vertices for some very symmetric graphs
  exact,      // one for every graph; the same wherever the other does not
              // depend on the order
};

} // namespace kestro
