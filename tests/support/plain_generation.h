// Candidate generation as one would explain it: every pair of patterns under a
// core is joined along every automorphism of the core, each result is put into
// canonical form, and kept if every connected graph with one edge less is in
// the level, which is looked up by canonical form.  Nothing is known beforehand
// and nothing is left out.  The forms are those of the stepwise reference, or
// of the caller.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "mining/parents.h"
#include "mining/sg_set.h"
#include "support/graphs.h"

namespace kestro {

// All there is in a canonical form, comparable.
using graph_form = std::vector<int>;

// The form of a graph as it stands, and after it was put into canonical form.
graph_form form_as_is(const graph *g);
graph_form plain_form(const graph *g);
graph_ptr plain_canonical(const graph *g);
// The permutations that keep g, in lexicographic order.
std::vector<std::vector<int>> plain_automorphisms(const graph *g);

// g plus x's edge, with ids as they come.
graph_ptr plain_extended(const graph *g, const extension &x);
// g without the edge u-w and without an end that only this edge held; vid are
// the vertices of g.  Null when nothing is left or it falls apart.
graph_ptr plain_without(const graph *g, int u, int w);

// Whether entry's map leads g onto rest, which lacks the edge u-w and perhaps a
// vertex: -1 for one that went, and a bijection on the others that keeps labels
// and all edges, but u-w, in both directions.
bool is_map_onto_rest(const graph *g, int u, int w, const graph *rest,
                      const sg_parent *entry);

// The patterns of a level by their forms.
std::map<graph_form, int> ids_by_form(const sg_set *level);

// One that is kept of a candidate's parents.
struct plain_parent {
  int pid;
  int u; // the first edge, by u, then v, that leads there
  int v;
  bool operator==(const plain_parent &) const = default;
};

struct plain_candidate {
  graph_ptr form;
  std::vector<int> pids;          // all parents, ascending
  std::vector<plain_parent> kept; // by pid
};

// The candidates of the next size by their forms, which canonical gives.
// children is a level with known supports, cores the level below it with known
// children.
std::map<graph_form, plain_candidate> plain_candidates(
    const sg_set *children, const sg_set *cores,
    std::function<graph_ptr(const graph *)> canonical = plain_canonical);

} // namespace kestro
