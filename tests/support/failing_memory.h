// Memory that runs out on demand.  A program that links this has allocators of
// its own, which serve all of it, the C and C++ libraries included.
#pragma once

namespace kestro {

// Which allocations are refused.
enum class refusal {
  once,   // a single one
  lasting // that one and all behind it
};

// Counts allocations from here on and refuses the n-th, n from 1.
void refuse_allocation(long n, refusal how);
// Refuses none any more; returns how many were asked for since the call above.
long refuse_no_allocation();
// Blocks that have been allocated and not been freed.
long live_blocks();

} // namespace kestro
