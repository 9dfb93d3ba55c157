// The plain generation of candidates.
//
// Patterns are lists of edges here.  What the product decides by tables,
// filters and knowledge from the level before is decided by canonical forms.
// Order matters in one place: where a canonical form depends on the order in
// which the vertices come in, a join must list them as the product does, the
// vertices of the second pattern first.

#include "support/plain_generation.h"

#include <algorithm>
#include <set>

#include "reference/cl/canonical.h"
#include "reference/graph/graph.h"
#include "reference/mining/subgraph.h"

namespace kestro {

using ints = std::vector<int>;

static int at(const ints &values, int i) {
  return values[static_cast<size_t>(i)];
}

graph_form form_as_is(const graph *g) {
  graph_form form = {g->es, g->vs};
  form.insert(form.end(), g->e, g->e + g->es);
  form.insert(form.end(), g->v, g->v + g->vs + 1);
  form.insert(form.end(), g->elabel, g->elabel + g->es);
  form.insert(form.end(), g->vlabel, g->vlabel + g->vs);
  return form;
}

graph_ptr plain_canonical(const graph *g) {
  graph_ptr form(graph_copy(g));
  stepwise::cl_canonicalize_graph(form.get());
  return form;
}

graph_form plain_form(const graph *g) {
  return form_as_is(plain_canonical(g).get());
}

// Whether vertex u = map.size() - 1 of g fits where map brings it, as far as
// map goes.
static bool last_fits(const graph *g, const ints &map) {
  const int u = static_cast<int>(map.size()) - 1;
  if (g->vlabel[u] != g->vlabel[at(map, u)])
    return false;
  for (int w = 0; w < u; w++)
    if (at(map, w) == at(map, u) ||
        graph_edge_label(g, u, w) !=
            graph_edge_label(g, at(map, u), at(map, w)))
      return false;
  return true;
}

static void extend(const graph *g, ints *map, std::vector<ints> *found) {
  if (static_cast<int>(map->size()) == g->vs) {
    found->push_back(*map);
    return;
  }
  for (int image = 0; image < g->vs; image++) {
    map->push_back(image);
    if (last_fits(g, *map))
      extend(g, map, found);
    map->pop_back();
  }
}

std::vector<ints> plain_automorphisms(const graph *g) {
  std::vector<ints> found;
  ints map;
  extend(g, &map, &found);
  return found;
}

// Whether all vertices hang together.
static bool is_connected(const graph *g) {
  std::set<int> met = {0};
  for (size_t before = 0; before != met.size();) {
    before = met.size();
    for (const test_edge &edge : edges_of(g))
      if (met.count(edge.u) || met.count(edge.w)) {
        met.insert(edge.u);
        met.insert(edge.w);
      }
  }
  return static_cast<int>(met.size()) == g->vs;
}

graph_ptr plain_without(const graph *g, int u, int w) {
  std::vector<test_edge> rest;
  for (const test_edge &edge : edges_of(g))
    if (edge.u != u || edge.w != w)
      rest.push_back(edge);
  ints place(static_cast<size_t>(g->vs), -1);
  ints vids;
  for (int i = 0; i < g->vs; i++) {
    const bool held =
        std::any_of(rest.begin(), rest.end(), [=](const test_edge &edge) {
          return edge.u == i || edge.w == i;
        });
    if (!held)
      continue;
    place[static_cast<size_t>(i)] = static_cast<int>(vids.size());
    vids.push_back(i);
  }
  if (vids.empty())
    return nullptr;
  ints vlabels;
  for (const int vid : vids)
    vlabels.push_back(g->vlabel[vid]);
  for (test_edge &edge : rest)
    edge = {at(place, edge.u), at(place, edge.w), edge.label};
  graph_ptr part = make_graph(vlabels, rest);
  std::copy(vids.begin(), vids.end(), part->vid);
  return is_connected(part.get()) ? std::move(part) : nullptr;
}

graph_ptr plain_extended(const graph *g, const extension &x) {
  ints vlabels = vlabels_of(g);
  std::vector<test_edge> edges = edges_of(g);
  edges.push_back({x.from, x.to == -1 ? g->vs : x.to, x.elabel});
  if (x.to == -1)
    vlabels.push_back(x.vlabel);
  return make_graph(vlabels, edges);
}

bool is_map_onto_rest(const graph *g, int u, int w, const graph *rest,
                      const sg_parent *entry) {
  std::set<int> images;
  for (int i = 0; i < g->vs; i++) {
    const int image = entry->image(i);
    if (image == -1) {
      if ((i != u && i != w) || g->v[i + 1] - g->v[i] != 1)
        return false;
      continue;
    }
    if (image < 0 || image >= rest->vs || !images.insert(image).second ||
        rest->vlabel[image] != g->vlabel[i])
      return false;
  }
  for (const test_edge &edge : edges_of(g))
    if ((edge.u != u || edge.w != w) &&
        graph_edge_label(rest, entry->image(edge.u), entry->image(edge.w)) !=
            edge.label)
      return false;
  return static_cast<int>(images.size()) == rest->vs && rest->es == g->es - 2;
}

std::map<graph_form, int> ids_by_form(const sg_set *level) {
  std::map<graph_form, int> ids;
  for (int id = 0; id < sg_set_size(level); id++)
    ids[form_as_is(sg_set_get(level, id)->g)] = id;
  return ids;
}

namespace {

class generation {
public:
  generation(const sg_set *children, const sg_set *cores,
             std::function<graph_ptr(const graph *)> canonical)
      : children_(children), cores_(cores), canonical_(std::move(canonical)),
        ids_(ids_by_form(children)) {}

  std::map<graph_form, plain_candidate> run() {
    for (int p = 0; p < sg_set_size(cores_); p++) {
      const subgraph *core = sg_set_get(cores_, p);
      const std::vector<ints> perms = plain_automorphisms(core->g);
      for (int i = 0; i < sg_child_size(core); i++)
        for (int j = i; j < sg_child_size(core); j++)
          for (const ints &perm : perms)
            join(sg_child_at(core, i), sg_child_at(core, j), p, perm);
    }
    return std::move(accepted_);
  }

private:
  // a's edge that p lacks, built onto b with p in a laid over p in b by perm.
  void join(int a, int b, int p, const ints &perm) {
    const subgraph *sa = sg_set_get(children_, a);
    const subgraph *sb = sg_set_get(children_, b);
    const sg_parent *ea = sg_find_kept(sa, p);
    const sg_parent *eb = sg_find_kept(sb, p);
    ints core_to_b(static_cast<size_t>(perm.size()), -1);
    int outside = -1;
    for (int i = 0; i < eb->vs; i++) {
      if (eb->image(i) == -1)
        outside = i;
      else
        core_to_b[static_cast<size_t>(eb->image(i))] = i;
    }
    const int label = graph_edge_label(sa->g, ea->u, ea->v);
    int ends[2] = {ea->u, ea->v};
    int new_vlabel = -1;
    for (int &end : ends) {
      const int in_core = ea->image(end);
      if (in_core == -1)
        new_vlabel = sa->g->vlabel[end];
      end = in_core == -1 ? -1 : at(core_to_b, at(perm, in_core));
    }
    if (ends[0] != -1 && ends[1] != -1) {
      close(sb->g, ends[0], ends[1], label);
      return;
    }
    const int held = ends[0] == -1 ? ends[1] : ends[0];
    hang(sb->g, held, new_vlabel, label);
    if (outside != -1 && sb->g->vlabel[outside] == new_vlabel)
      close(sb->g, held, outside, label);
  }

  void close(const graph *b, int u, int w, int label) {
    std::vector<test_edge> edges = edges_of(b);
    for (const test_edge &edge : edges)
      if ((edge.u == u && edge.w == w) || (edge.u == w && edge.w == u))
        return;
    edges.push_back({u, w, label});
    offer(make_graph(vlabels_of(b), edges).get());
  }

  void hang(const graph *b, int u, int vlabel, int label) {
    ints vlabels = vlabels_of(b);
    std::vector<test_edge> edges = edges_of(b);
    edges.push_back({u, b->vs, label});
    vlabels.push_back(vlabel);
    offer(make_graph(vlabels, edges).get());
  }

  void offer(const graph *g) {
    if (!joined_.insert(form_as_is(g)).second)
      return; // its form is known already
    plain_candidate cand;
    cand.form = canonical_(g);
    const graph_form form = form_as_is(cand.form.get());
    if (tried_.insert(form).second && is_closed(&cand))
      accepted_.emplace(form, std::move(cand));
  }

  // Looks up every connected part of one edge less, and notes them as parents.
  bool is_closed(plain_candidate *cand) const {
    std::map<int, plain_parent> by_pid;
    for (const test_edge &edge : edges_of(cand->form.get())) {
      const graph_ptr part = plain_without(cand->form.get(), edge.u, edge.w);
      if (!part)
        continue;
      const auto found = ids_.find(form_as_is(canonical_(part.get()).get()));
      if (found == ids_.end())
        return false;
      by_pid.try_emplace(found->second,
                         plain_parent{found->second, edge.u, edge.w});
    }
    for (const auto &[pid, parent] : by_pid) {
      cand->pids.push_back(pid);
      cand->kept.push_back(parent);
    }
    keep_two(&cand->kept);
    return true;
  }

  // Those in the fewest transactions; of equal ones, the smaller id.
  void keep_two(std::vector<plain_parent> *parents) const {
    std::stable_sort(parents->begin(), parents->end(),
                     [this](const plain_parent &a, const plain_parent &b) {
                       return support(a.pid) < support(b.pid);
                     });
    if (parents->size() > 2)
      parents->resize(2);
    std::sort(parents->begin(), parents->end(),
              [](const plain_parent &a, const plain_parent &b) {
                return a.pid < b.pid;
              });
  }

  int support(int pid) const { return sg_support(sg_set_get(children_, pid)); }

  const sg_set *children_;
  const sg_set *cores_;
  const std::function<graph_ptr(const graph *)> canonical_;
  const std::map<graph_form, int> ids_; // of children
  std::set<graph_form> joined_;         // as they came
  std::set<graph_form> tried_;
  std::map<graph_form, plain_candidate> accepted_;
};

} // namespace

std::map<graph_form, plain_candidate>
plain_candidates(const sg_set *children, const sg_set *cores,
                 std::function<graph_ptr(const graph *)> canonical) {
  return generation(children, cores, std::move(canonical)).run();
}

} // namespace kestro
