// The automorphisms of the cores that joins go through.
#pragma once

#include "base/interruption.h"
#include "base/ksstack.h"
#include "reference/cl/isomorphism_work.h"

namespace kestro {

// All automorphisms of the cores met so far, each computed once.
//
// An entry is one block of 2 + n ints:
//
//   | core id | n: vertices of the core | perm: n |
struct automorphism_cache {
  ksstack *entries = nullptr; // of int *, sorted by compare_automorphisms
  isomorphism_arrays arrays;  // of the search for them
};

automorphism_cache *automorphism_cache_create();
void automorphism_cache_free(automorphism_cache *cache);

struct automorphism_cache_deleter {
  void operator()(automorphism_cache *c) const { automorphism_cache_free(c); }
};
using automorphism_cache_ptr =
    std::unique_ptr<automorphism_cache, automorphism_cache_deleter>;

// The index of the first entry of a core, whose automorphisms are computed on
// its first use.  Its entries follow one another.  poll, which may be null, has
// a step for every slot looked at; when it throws, the core's entries are not
// complete.
int automorphism_cache_find(automorphism_cache *cache, int core,
                            const graph *core_graph,
                            interruption_poll *poll = nullptr);
// The permutation of entry i if it belongs to core, else null.
const int *automorphism_cache_perm(const automorphism_cache *cache, int i,
                                   int core);

// Order of entries: core id, then permutation.
int compare_automorphisms(const void *a, const void *b);

} // namespace kestro
