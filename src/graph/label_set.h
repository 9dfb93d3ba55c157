// The distinct labels of a database: label strings in the files, small ids
// everywhere else.
#pragma once

#include <memory>
#include <string_view>

#include "base/file_text.h"
#include "base/ksstack.h"
#include "base/xmalloc.h"

namespace kestro {

// Edge labels and vertex labels, each kind a stack of owned strings in
// ascending byte order without repeats.  A label's id is its position, so ids
// are final only once the set is complete.
struct label_set {
  ksstack *edge_labels;   // of char *
  ksstack *vertex_labels; // of char *
};

// An empty set; freed with its strings by label_set_free.
label_set *label_set_create();
void label_set_free(label_set *ls);

// Adds a copy of s unless it is present.
void label_set_add_edge_label(label_set *ls, const char *s);
void label_set_add_vertex_label(label_set *ls, const char *s);

// The id of s.  Dies, listing all labels of the kind, when s is absent.
int label_set_edge_label_id(const label_set *ls, const char *s);
int label_set_vertex_label_id(const label_set *ls, const char *s);
// The string of an id, owned by the set; dies with "invalid index" for an id
// out of range.
const char *label_set_edge_label(const label_set *ls, int id);
const char *label_set_vertex_label(const label_set *ls, int id);
// How many there are.
int label_set_edge_labels(const label_set *ls);
int label_set_vertex_labels(const label_set *ls);

// Adds copies of words, of each kind without repeats, none of which is there.
void label_set_add(const xvector<std::string_view> &vertex_labels,
                   const xvector<std::string_view> &edge_labels, label_set *ls);

// Adds the labels of all vertex and edge lines of a transaction text, lines
// before its first transaction included.  Dies at malformed lines, with ls
// as it was; the error names the line.
void label_set_build(const file_text &text, label_set *ls);

// A new set read from a label file, dying as above, and a set written to one.
label_set *label_set_load(const char *name);
void label_set_save(const label_set *ls, const char *name);

struct label_set_deleter {
  void operator()(label_set *ls) const { label_set_free(ls); }
};
using label_set_ptr = std::unique_ptr<label_set, label_set_deleter>;

} // namespace kestro
