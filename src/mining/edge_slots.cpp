// Slots of edges, built in one pass.

#include "mining/edge_slots.h"

#include <algorithm>

namespace kestro {

edge_slots::edge_slots(const graph_list *transactions, const interruption *stop)
    : transactions_(transactions), kinds_(stop) {
  size_t words = 0;
  for (int i = 0; i < transactions->count; i++) {
    const graph *t = graph_list_at(transactions, i);
    if (t->vs > max_vertices)
      return;
    words += static_cast<size_t>(t->vs) + 1 + static_cast<size_t>(t->es);
  }
  interruption_poll poll(stop, 1 << 17);
  words_.reserve(words);
  first_.reserve(static_cast<size_t>(transactions->count));
  for (int i = 0; i < transactions->count; i++) {
    const graph *t = graph_list_at(transactions, i);
    poll.step(t->vs + t->es);
    first_.push_back(words_.size());
    add(t);
  }
}

void edge_slots::add(const graph *t) {
  const uint32_t slots = static_cast<uint32_t>(t->vs) + 1;
  for (int u = 0; u <= t->vs; u++)
    words_.push_back(slots + static_cast<uint32_t>(t->v[u]));
  for (int j = 0; j < t->es; j++)
    words_.push_back(
        slot(t->e[j], number_kind(t->elabel[j], t->vlabel[t->e[j]])));
}

int edge_slots::kind_of(int elabel, int vlabel) const {
  return kinds_
      .look_up(numbered_kind::hash_of(elabel, vlabel),
               [&](const numbered_kind &k) {
                 return k.elabel == elabel && k.vlabel == vlabel;
               })
      .number;
}

// The number of a kind, which it gets if it has none.
int edge_slots::number_kind(int elabel, int vlabel) {
  const int known = kind_of(elabel, vlabel);
  if (known != -1)
    return known;
  const int number =
      std::min(static_cast<int>(kinds_.size()), int{other_kinds});
  kinds_.insert({elabel, vlabel, number},
                [](const numbered_kind &) { return false; });
  return number;
}

} // namespace kestro
