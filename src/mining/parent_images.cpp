// An automorphism brings an edge f of a candidate to an edge f', and what is
// left without f to what is left without f': these are one graph.  So the
// parent is the same; a vertex goes back by the automorphism, then along the
// map without f.  The images are met by a walk along generators, each from the
// entry of the edge before.  The map may differ by an automorphism of the
// parent from the one that a canonical form gives.

#include "mining/parent_images.h"

#include <algorithm>

#include "mining/extension.h"

namespace kestro {

void parent_images::set(const graph *g, const xvector<removable_edge> &edges) {
  g_ = g;
  edges_ = &edges;
  perms_.clear();
  generators_ = search_.find(g, &perms_);
  known_.assign(edges.size(), 0);
  at_slot_.resize(static_cast<size_t>(g->es));
  ints_ = sg_parent_bytes(g->vs) / sizeof(int);
  if (memory_.size() < edges.size() * ints_)
    memory_.resize(edges.size() * ints_);
  for (size_t i = 0; i < edges.size(); i++) {
    at_slot_[static_cast<size_t>(edges[i].slot)] = static_cast<int>(i);
    at(i)->u = short_vertex(edges[i].u);
    at(i)->v = short_vertex(edges[i].w);
    at(i)->vs = short_vertex(g->vs);
  }
}

// The edge to which an automorphism brings edge i.
size_t parent_images::image_of(size_t i, const int *perm) const {
  const removable_edge &edge = (*edges_)[i];
  const auto [u, w] = std::minmax(perm[edge.u], perm[edge.w]);
  return static_cast<size_t>(
      at_slot_[static_cast<size_t>(graph_edge_index(g_, u, w))]);
}

void parent_images::enter_with_images(size_t i) {
  known_[i] = 1;
  queue_.assign(1, i);
  for (size_t next = 0; next < queue_.size(); next++) {
    const sg_parent *from = at(queue_[next]);
    for (int k = 0; k < generators_; k++) {
      const int *perm = perms_.data() + static_cast<ptrdiff_t>(k) * g_->vs;
      const size_t image = image_of(queue_[next], perm);
      if (known_[image])
        continue;
      known_[image] = 1;
      sg_parent *to = at(image);
      to->pid = from->pid;
      for (int x = 0; x < g_->vs; x++)
        to->set_image(perm[x], from->image(x));
      queue_.push_back(image);
    }
  }
}

} // namespace kestro
