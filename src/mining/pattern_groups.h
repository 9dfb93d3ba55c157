// The automorphism groups of patterns, and where they bring an edge.
#pragma once

#include <cstdint>
#include <span>

#include "base/parallel.h"
#include "cl/automorphism_group.h"
#include "mining/extension.h"

namespace kestro {

// Generators of the automorphism group of a pattern; none is for the identity.
struct pattern_group {
  const int *perms = nullptr; // vs ints each: the image of every vertex
  int count = 0;
  int vs = 0; // of the pattern

  const int *perm(int i) const {
    return perms + static_cast<ptrdiff_t>(i) * vs;
  }
};

// The groups of numbered patterns, each computed once.
class pattern_groups {
public:
  explicit pattern_groups(const interruption *stop = nullptr) : stop_(stop) {}

  // Forgets all groups and expects the numbers from 0 to n - 1.  Keeps the
  // memory.
  void expect(int n);
  // Computes the group of the pattern with number i, whose graph g is, unless
  // it is known.  Groups handed out before are not valid any more.
  void prepare(int i, const graph *g);
  // The same for every i expected for which graph_of(i) is not null, on up to
  // jobs threads.
  template <class GraphOf> void prepare_all(int jobs, GraphOf graph_of);
  // The group of a pattern; of no generators until it is prepared.
  pattern_group at(int i) const;

private:
  struct entry {
    size_t first = 0; // in the worker's perms
    int worker = 0;
    int count = -1; // of generators; -1 until it is prepared
    int vs = 0;
  };
  // Who computes groups, one for each thread.
  struct worker {
    explicit worker(const interruption *stop) : search(stop) {}
    automorphism_search search;
    xvector<int> perms; // of its groups, one after another
  };

  void prepare_by(int w, int i, const graph *g);
  void need_workers(int n);

  const interruption *stop_;
  xvector<entry> entries_;
  xvector<worker> workers_;
};

template <class GraphOf>
void pattern_groups::prepare_all(int jobs, GraphOf graph_of) {
  const int n = static_cast<int>(entries_.size());
  need_workers(worker_count(jobs, n));
  parallel_for(
      jobs, n,
      [&](int w, int i) {
        if (const graph *g = graph_of(i))
          prepare_by(w, i, g);
      },
      [](int) {});
}

// Where an edge lies in a pattern: its ends in any order, or one end and -1
// when the other one is a new vertex.
struct edge_place {
  int u;
  int w;
};

// Lists the places to which groups bring an edge.
class orbit_walk {
public:
  // The images of a place under a group, each once, itself first.  The list is
  // valid until the next call.  Costs a step for each of them and generator, of
  // poll where it is given.
  std::span<const edge_place> images(const pattern_group &group,
                                     edge_place place,
                                     interruption_poll *poll = nullptr);

private:
  void walk(const pattern_group &group, const edge_place &place,
            interruption_poll *poll);
  void meet(const edge_place &place, int vs);
  void clear_marks(int vs);

  xvector<edge_place> images_;
  xvector<uint64_t> marks_; // bits by vertex or pair, 0 between calls
};

} // namespace kestro
