// The counter with a table.
//
// The first two levels are read off the table, whose graphs of one and two
// edges are laid out anew, and sorted; later candidates are looked up.

#include "support/table_counter.h"

#include <utility>

#include "mining/first_levels.h"
#include "mining/parents.h"

namespace kestro {

void table_counter::learn(const sg_set *level) {
  for (int i = 0; i < sg_set_size(level); i++) {
    const subgraph *sg = sg_set_get(level, i);
    supports_[form_as_is(sg->g)] = sg->count;
  }
}

// Where the parts of a form begin: es, vs, e, v, elabel, vlabel.
static const int *neighbours_of(const graph_form &form) {
  return form.data() + 2;
}
static const int *edge_labels_of(const graph_form &form) {
  return neighbours_of(form) + form[0] + form[1] + 1;
}
static const int *vertex_labels_of(const graph_form &form) {
  return edge_labels_of(form) + form[0];
}

static void push_without_tids(sg_set *level, subgraph *made, int support) {
  sg_ptr sg(made);
  ksstack_free(std::exchange(sg->tid, nullptr));
  sg->count = support;
  sg_set_push(level, std::move(sg));
}

sg_set_ptr table_counter::edges() {
  sg_set_ptr level(sg_set_create());
  for (const auto &[form, support] : supports_) {
    if (form[0] != 2)
      continue;
    const int *vlabels = vertex_labels_of(form);
    push_without_tids(
        level.get(),
        sg_create_edge(vlabels[0], vlabels[1], edge_labels_of(form)[0]),
        support);
  }
  sg_set_sort(level.get());
  return level;
}

sg_set_ptr table_counter::double_edges(const sg_set *edges) {
  sg_set_ptr level(sg_set_create());
  for (const auto &[form, support] : supports_) {
    if (form[0] != 4)
      continue;
    const int *vlabels = vertex_labels_of(form);
    const int *elabels = edge_labels_of(form);
    subgraph *sg = sg_create_double_edge(elabels[0], elabels[1], vlabels[1],
                                         vlabels[2], vlabels[0]);
    setup_double_edge_subgraph_parent_info(sg, edges);
    push_without_tids(level.get(), sg, support);
  }
  sg_set_sort(level.get());
  return level;
}

void table_counter::bound(sg_set *, const sg_set *, work_watcher *) {}

void table_counter::count(sg_set *cand, const sg_set *, work_watcher *) {
  std::vector<sg_ptr> records;
  for (int i = 0; i < sg_set_size(cand); i++)
    records.emplace_back(sg_set_get(cand, i));
  sg_set_clear(cand);
  for (sg_ptr &sg : records) {
    const auto found = supports_.find(form_as_is(sg->g));
    if (found == supports_.end())
      continue;
    sg->count = found->second;
    sg_set_push(cand, std::move(sg));
  }
}

} // namespace kestro
