// The searches behind canonical order.
//
// The exhaustive search walks the product of all arrangements inside the parts
// and drops a prefix as soon as it falls below the best one found.  It costs
// the product of the factorials of the part sizes at worst.
//
// The stabilizer search sets one vertex of the first open part apart, refines,
// and goes on until the partition is discrete.  Every leaf it reaches replaces
// the best one: the search prunes on prefixes only, and the last leaf reached
// wins.  The order in which vertices are visited, which depends on stable
// sorting, is therefore part of the canonical form.
//
// Neither search moves a cell: only perm, iperm and the parts change.

#include "reference/cl/canonical_search.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "base/xmalloc.h"
#include "reference/base/enumeration.h"
#include "reference/cl/refine.h"

namespace kestro::stepwise {

namespace {

struct search_counters {
  uint64_t stabilizer_calls = 0;
  uint64_t leaves_left = UINT64_MAX;
};

} // namespace

static thread_local search_counters counters;

uint64_t cl_stabilizer_calls() { return counters.stabilizer_calls; }

void set_leaf_limit(uint64_t limit) { counters.leaves_left = limit; }

static void count_leaf() {
  if (counters.leaves_left == 0)
    throw leaf_limit_passed();
  counters.leaves_left--;
}

int compare_adjmat_parts_from_to(const adjmat *a, const adjmat *b, int from,
                                 int to) {
  assert(a->vs == b->vs);
  for (int i = a->part[from]; i < a->part[to + 1]; i++) {
    const int *row_a = a->rows[a->perm[i]];
    const int *row_b = b->rows[b->perm[i]];
    for (int j = 0; j < i; j++)
      if (const int d = row_a[a->perm[j]] - row_b[b->perm[j]])
        return d;
  }
  return 0;
}

static size_t row_bytes(const adjmat *m) {
  return static_cast<size_t>(m->vs) * sizeof(int);
}

void save_adjmat_perm(adjmat *m) {
  memcpy(m->start_perm, m->perm, row_bytes(m));
}

bool next_part_permutation(adjmat *m, int p) {
  const int begin = m->part[p];
  const int end = m->part[p + 1];
  if (end - begin == 1)
    return false;
  if (!next_permutation(m->perm + begin, end - begin))
    std::sort(m->perm + begin, m->perm + end);
  for (int i = begin; i < end; i++)
    m->iperm[m->perm[i]] = i;
  return !std::equal(m->perm + begin, m->perm + end, m->start_perm + begin);
}

// Skips parts of isolated vertices.  The record looked at is the one numbered
// like the position, not the vertex that stands there; in a connected graph of
// several vertices neither has degree 0.
static int skip_isolated(const adjmat *m, int p) {
  while (p + 1 < m->parts && m->vertex[m->part[p]].degree == 0)
    p++;
  return p;
}

void compare_adjmat_parts(adjmat *m, int p, adjmat *best) {
  p = skip_isolated(m, p);
  const bool last = p + 1 == m->parts;
  do {
    count_leaf();
    const int d = compare_adjmat_parts_from_to(m, best, p, p);
    if (d > 0)
      copy_adjmat_perm(m, best);
    if (d >= 0 && !last)
      compare_adjmat_parts(m, p + 1, best);
  } while (next_part_permutation(m, p));
}

void fix_vertex(adjmat *m, int v, int *saved_perm, int *saved_iperm,
                int *saved_part) {
  std::copy_n(m->perm, m->vs, saved_perm);
  std::copy_n(m->iperm, m->vs, saved_iperm);
  for (int i = 0; i < m->vs; i++)
    saved_part[i] = m->vertex[i].part;

  bool hit = false;
  for (int i = m->part[m->vertex[v].part]; i < m->vs; i++) {
    if (m->perm[i] == v)
      hit = true;
    else
      m->vertex[m->perm[i]].part++;
  }
  assert(hit);
  cl_refine(m);
}

void unfix_vertex(adjmat *m, int, const int *saved_perm, const int *saved_iperm,
                  const int *saved_part) {
  std::copy_n(saved_perm, m->vs, m->perm);
  std::copy_n(saved_iperm, m->vs, m->iperm);
  for (int i = 0; i < m->vs; i++)
    m->vertex[i].part = saved_part[i];
  cl_refine(m);
}

int first_open_part(const adjmat *m, int from) {
  for (int k = from; k < m->parts; k++)
    if (m->part[k + 1] - m->part[k] > 1)
      return k;
  return -1;
}

// best keeps the part count of the refined start, so it counts as discrete only
// for a caller who passes it so: in a search, every leaf is taken over.
static void take_leaf(const adjmat *m, int part, int from, adjmat *best) {
  count_leaf();
  if (best->parts == best->vs &&
      compare_adjmat_parts_from_to(m, best, from, part) <= 0)
    return;
  copy_adjmat_perm(m, best);
  copy_adjmat_partitioning(m, best);
}

void get_min_adjmat_by_stabilizer(adjmat *m, int part, int from, adjmat *best) {
  if (m->parts == m->vs) {
    take_leaf(m, part, from, best);
    return;
  }
  assert(m->part[part + 1] - m->part[part] > 1);
  const int pindex = first_open_part(m, 0);
  assert(pindex != -1);
  assert(pindex == part);
  xvector<int> saved_perm(static_cast<size_t>(m->vs));
  xvector<int> saved_iperm(saved_perm.size());
  xvector<int> saved_part(saved_perm.size());

  for (int q = m->part[part]; q < m->part[part + 1]; q++) {
    const int v = m->perm[q];
    fix_vertex(m, v, saved_perm.data(), saved_iperm.data(), saved_part.data());
    assert(m->parts <= m->vs);
    if (compare_adjmat_parts_from_to(m, best, 0, part) >= 0) {
      const int open = first_open_part(m, part + 1);
      counters.stabilizer_calls++;
      get_min_adjmat_by_stabilizer(m, open == -1 ? m->vs - 1 : open, part,
                                   best);
    }
    unfix_vertex(m, v, saved_perm.data(), saved_iperm.data(),
                 saved_part.data());
  }
}

} // namespace kestro::stepwise
