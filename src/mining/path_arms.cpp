// Numbering arms.
//
// Most labels and most edges of a database with many labels are infrequent.
// Without them the numbers are few, and pairs of arms number the possible paths
// without a gap: a table of them is as small as it can be.

#include "mining/path_arms.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace kestro {

namespace {

// An arm and its centre, by labels.
struct labelled_arm {
  int centre, to, e;
  bool operator<(const labelled_arm &other) const {
    return std::tie(centre, to, e) < std::tie(other.centre, other.to, other.e);
  }
};

} // namespace

// Marks the labels in use with 0, others with -1.
static xvector<int> vertex_marks(const sg_set *edges, int nvl) {
  xvector<int> marks(static_cast<size_t>(nvl), -1);
  for (int i = 0; i < sg_set_size(edges); i++) {
    const graph *g = sg_set_get(edges, i)->g;
    marks[static_cast<size_t>(g->vlabel[0])] = 0;
    marks[static_cast<size_t>(g->vlabel[1])] = 0;
  }
  return marks;
}

static xvector<int> edge_marks(const sg_set *edges, int nel) {
  xvector<int> marks(static_cast<size_t>(nel), -1);
  for (int i = 0; i < sg_set_size(edges); i++)
    marks[static_cast<size_t>(sg_set_get(edges, i)->g->elabel[0])] = 0;
  return marks;
}

// Numbers the marked ones; returns how many there are.
static int number_marked(xvector<int> *marks) {
  int count = 0;
  for (int &mark : *marks)
    if (mark == 0)
      mark = count++;
  return count;
}

path_arms::path_arms(const sg_set *edges, int nel, int nvl, size_t limit)
    : vertex_(vertex_marks(edges, nvl)), edge_(edge_marks(edges, nel)),
      edges_(number_marked(&edge_)),
      centre_(static_cast<size_t>(number_marked(&vertex_))),
      numbers_({edges_, centres()}, limit) {
  for (int label = 0; label < nvl; label++)
    if (const int centre = centre_of(label); centre >= 0)
      centre_[static_cast<size_t>(centre)] = label;
  number_arms(edges);
  list_by_labels(limit);
}

void path_arms::list_by_labels(size_t limit) {
  const size_t labels = vertex_.size() * edge_.size();
  if (labels > limit / sizeof(int) / std::max(centre_.size(), size_t{1}))
    return;
  xvector<int> list(centre_.size() * labels);
  for (int centre = 0; centre < centres(); centre++)
    for (int v = 0; v < static_cast<int>(vertex_.size()); v++)
      for (int e = 0; e < static_cast<int>(edge_.size()); e++)
        list[place(centre, e, v)] = arm_of(centre, e, v);
  by_labels_ = std::move(list);
}

void path_arms::number_arms(const sg_set *edges) {
  xvector<labelled_arm> all;
  for (int i = 0; i < sg_set_size(edges); i++) {
    const graph *g = sg_set_get(edges, i)->g;
    all.push_back({g->vlabel[0], g->vlabel[1], g->elabel[0]});
    if (g->vlabel[0] != g->vlabel[1])
      all.push_back({g->vlabel[1], g->vlabel[0], g->elabel[0]});
  }
  std::sort(all.begin(), all.end());
  first_path_ = {0};
  for (size_t i = 0; i < all.size();) {
    const int centre = centre_of(all[i].centre);
    first_arm_.push_back(i);
    int arms = 0;
    for (; i < all.size() && centre_of(all[i].centre) == centre; i++) {
      arms_.push_back({all[i].e, all[i].to});
      numbers_.set_number(
          {centre, centre_of(all[i].to), edge_[static_cast<size_t>(all[i].e)]},
          ++arms);
    }
    const auto n = static_cast<size_t>(arms);
    first_path_.push_back(first_path_.back() + n * (n + 1) / 2);
    most_ = std::max(most_, arms);
  }
}

} // namespace kestro
