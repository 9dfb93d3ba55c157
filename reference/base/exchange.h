// Exchanges.
#pragma once

#include <cstddef>

namespace kestro {

// Exchange of two ints, two pairs of ints, two byte ranges of one length.
void swap_ints(int *a, int *b);
void swap_int_pairs(int *a, int *b);
void swap_bytes(void *a, void *b, size_t length);

} // namespace kestro
