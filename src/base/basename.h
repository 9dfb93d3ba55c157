// The last part of a path.
#pragma once

namespace kestro {

// What follows the last "/" of path, as an address inside path.
const char *basename(const char *path);

} // namespace kestro
