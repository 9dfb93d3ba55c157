// Children by parent and edge.
//
// Each core has a sorted list of the places of its children's edges, and all
// lists lie one behind another.  The candidates that are looked up one after
// another are joins of one core, so they ask for few parents, whose lists stay
// near.
//
// An edge of a parent can be placed wherever an automorphism of the parent
// brings it; every such place is entered once, so a look-up needs no search.
// The entry tells the generator by which the place was reached, so a way back
// to the first place gives an automorphism (a Schreier vector).

#include "mining/child_table.h"

#include <algorithm>

#include "mining/expect_records.h"
#include "mining/parents.h"

namespace kestro {

// An index of an entry or a generator in the type that the table stores.  As
// with vertices, time ends a run long before there are more.
static int16_t short_index(int i) { return short_vertex(i); }

// The order in which children's entries are listed.
static bool is_earlier(const found_child &a, const found_child &b) {
  return a.child != b.child ? a.child < b.child : a.entry < b.entry;
}

// Builds the lists: first the edges of all children, as they come, each with
// its core, then core by core, sorted and with their images.
class child_table::builder {
public:
  builder(child_table *table, const sg_set *children, const interruption *stop)
      : table_(table), children_(children), poll_(stop, 4096), met_(stop) {}

  // Lists the edges of all children.
  void collect();
  // Fills the table.
  void fill();

private:
  // A child's edge as an extension of a core.
  struct entry {
    extension edge;
    found_child found;
  };

  void make_room();
  void add_images(const pattern_group &group, size_t first, size_t end);

  child_table *table_;
  const sg_set *children_;
  interruption_poll poll_;
  extension_set met_;      // places of one core
  xvector<entry> entries_; // core by core
  xvector<size_t> ends_;   // by core, of its entries
  xvector<entry> places_;  // of one core
};

void child_table::builder::collect() {
  make_room();
  table_->children_.reserve(static_cast<size_t>(sg_set_size(children_)));
  for (int id = 0; id < sg_set_size(children_); id++) {
    expect_records(children_, id, record_part::parents);
    const subgraph *child = sg_set_get(children_, id);
    table_->children_.push_back(child->invariant);
    poll_.step(1 + sg_parent_size(child));
    for (int l = 0; l < sg_parent_size(child); l++) {
      const sg_parent *parent = sg_parent_at(child, l);
      entries_[ends_[static_cast<size_t>(parent->pid)]++] = {
          sg_parent_edge(child, parent), {id, short_index(l), -1}};
    }
  }
}

// Each core's entries end where they begin, at first.
void child_table::builder::make_room() {
  const int cores = table_->cores_->size();
  ends_.reserve(static_cast<size_t>(cores));
  size_t entries = 0;
  for (int p = 0; p < cores; p++) {
    ends_.push_back(entries);
    entries += static_cast<size_t>(table_->cores_->entries(p));
  }
  entries_.resize(entries);
}

void child_table::builder::fill() {
  xvector<placed_child> &out = table_->places_;
  out.reserve(entries_.size()); // most have one place only
  table_->starts_.reserve(ends_.size() + 1);
  table_->starts_.push_back(0);
  size_t first = 0;
  for (size_t p = 0; p < ends_.size(); first = ends_[p], p++) {
    const size_t end = ends_[p];
    poll_.step(static_cast<int64_t>(end - first));
    const pattern_group group = table_->cores_->group(static_cast<int>(p));
    const auto start = static_cast<ptrdiff_t>(out.size());
    if (group.count == 0)
      for (size_t i = first; i < end; i++) {
        const entry &e = entries_[i];
        out.push_back(placed(e.edge, e.found));
      }
    else
      add_images(group, first, end);
    std::sort(out.begin() + start, out.end(),
              [this](const placed_child &a, const placed_child &b) {
                poll_.step();
                return is_same(a, b) ? is_earlier(a.found, b.found)
                                     : comes_after(a, b);
              });
    // The earliest of equal ones stays.
    out.erase(std::unique(out.begin() + start, out.end(), is_same), out.end());
    table_->starts_.push_back(int_count(out.size()));
  }
}

// Adds the images of a core's entries, each once.
void child_table::builder::add_images(const pattern_group &group, size_t first,
                                      size_t end) {
  met_.clear();
  for (size_t i = first; i < end; i++) {
    const entry &e = entries_[i];
    if (!met_.insert(e.edge))
      continue; // all images are in, too
    places_.assign(1, e);
    for (size_t j = 0; j < places_.size(); j++) {
      poll_.step(group.count);
      for (int k = 0; k < group.count; k++) {
        const extension image = image_of(places_[j].edge, group.perm(k));
        if (met_.insert(image))
          places_.push_back(
              {image, {e.found.child, e.found.entry, short_index(k)}});
      }
    }
    for (const entry &place : places_)
      table_->places_.push_back(placed(place.edge, place.found));
  }
}

child_table::child_table(const sg_set *children, const core_links *cores,
                         const interruption *stop)
    : cores_(cores) {
  builder lists(this, children, stop);
  lists.collect();
  lists.fill();
}

// The vertex that a permutation brings to u.
static int preimage(const int *perm, int u) {
  int i = 0;
  while (perm[i] != u)
    i++;
  return i;
}

void child_table::find_steps(extension x, xvector<const int *> *steps) const {
  steps->clear();
  const pattern_group group = cores_->group(x.pattern);
  for (int k; (k = find(x)->generator) != -1;) {
    const int *perm = group.perm(k);
    steps->push_back(perm);
    const int from = preimage(perm, x.from);
    x = x.to == -1 ? pendant_extension(x.pattern, from, x.elabel, x.vlabel)
                   : closing_extension(x.pattern, from, preimage(perm, x.to),
                                       x.elabel);
  }
}

} // namespace kestro
