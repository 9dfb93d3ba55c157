// The choice of the two kept parents, and what entries say.
//
// A pattern meets its join partners in the child lists of its kept parents, and
// the least frequent parents have the shortest lists.

#include "mining/parents.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace kestro {

// Negative when the pattern x of prev ranks before y.
static int compare_ranks(int x, int y, const sg_set *prev) {
  const int d = sg_set_get(prev, x)->count - sg_set_get(prev, y)->count;
  return d ? d : x - y;
}

// Where the new entry goes among the kept ones, which have other pids: the one
// it takes the place of, -1 for none.
static int place_among_kept(const subgraph *sg, int pid, const sg_set *prev) {
  if (sg_kept_size(sg) < 2)
    return sg_kept_size(sg);
  const int p0 = sg_kept_at(sg, 0)->pid;
  const int p1 = sg_kept_at(sg, 1)->pid;
  const int cmpx0 = compare_ranks(pid, p0, prev);
  const int cmpx1 = compare_ranks(pid, p1, prev);
  const int cmp01 = compare_ranks(p0, p1, prev);
  assert(cmpx0 && cmpx1 && cmp01);
  const int worse = cmp01 < 0 ? 1 : 0;
  return (worse ? cmpx1 : cmpx0) < 0 ? worse : -1;
}

void sg_update_parent_info(subgraph *sg, const sg_parent *entry,
                           const sg_set *prev) {
  const bool is_new = !sg_find_kept(sg, entry->pid);
  const int place = is_new ? place_among_kept(sg, entry->pid, prev) : -1;
  sg_add_parent(sg, entry);
  if (place == -1)
    return;
  sg->kept[place] = sg->parents - 1;
  if (sg_kept_size(sg) == 2 && sg_kept_at(sg, 0)->pid > sg_kept_at(sg, 1)->pid)
    std::swap(sg->kept[0], sg->kept[1]);
}

void sg_parent_ids(const subgraph *sg, xvector<int> *ids) {
  ids->clear();
  for (int i = 0; i < sg_parent_size(sg); i++)
    ids->push_back(sg_parent_at(sg, i)->pid);
  std::sort(ids->begin(), ids->end());
  ids->erase(std::unique(ids->begin(), ids->end()), ids->end());
}

extension sg_parent_edge(const subgraph *sg, const sg_parent *entry) {
  const int u = entry->image(entry->u);
  const int v = entry->image(entry->v);
  const int elabel = graph_edge_label(sg->g, entry->u, entry->v);
  if (u == -1)
    return pendant_extension(entry->pid, v, elabel, sg->g->vlabel[entry->u]);
  if (v == -1)
    return pendant_extension(entry->pid, u, elabel, sg->g->vlabel[entry->v]);
  return closing_extension(entry->pid, u, v, elabel);
}

} // namespace kestro
