// Label sets and label files.
//
// Either kind is a sorted stack of strings searched by bisection, so building
// costs a comparison per bit of the set's size and line, and the ids follow
// from the set alone: the order of lines and repeats do not matter.

#include "graph/label_set.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "base/error.h"
#include "base/fgetl.h"
#include "base/xmalloc.h"
#include "graph/graph_line.h"

namespace kestro {

static constexpr int first_capacity = 128; // labels of a kind

static ksstack *new_labels() {
  return ksstack_new(first_capacity, static_cast<int>(sizeof(char *)));
}

static void free_labels(ksstack *labels) {
  for (int i = 0; i < labels->count; i++)
    xfree(ksstack_array<char *>(labels)[i]);
  ksstack_free(labels);
}

label_set *label_set_create() {
  xptr<label_set> ls(static_cast<label_set *>(xmalloc(sizeof(label_set))));
  ksstack_ptr edge_labels(new_labels());
  ls->vertex_labels = new_labels();
  ls->edge_labels = edge_labels.release();
  return ls.release();
}

void label_set_free(label_set *ls) {
  if (!ls)
    return;
  free_labels(ls->edge_labels);
  free_labels(ls->vertex_labels);
  xfree(ls);
}

static void add_label(ksstack *labels, const char *s) {
  if (ksstack_bsearch(&s, labels, compar_str))
    return;
  const size_t bytes = strlen(s) + 1;
  xptr<char> copy(static_cast<char *>(xmalloc(bytes)));
  memcpy(copy.get(), s, bytes);
  const char *address = copy.get();
  ksstack_insert_sorted(&address, labels, compar_str);
  copy.release();
}

void label_set_add_edge_label(label_set *ls, const char *s) {
  add_label(ls->edge_labels, s);
}

void label_set_add_vertex_label(label_set *ls, const char *s) {
  add_label(ls->vertex_labels, s);
}

static std::string listing(const ksstack *labels) {
  std::string text;
  for (int i = 0; i < labels->count; i++)
    text += std::string(ksstack_array<char *>(labels)[i]) + "\n";
  return text;
}

// The id of s; kind names the labels in the message.
static int label_id(const ksstack *labels, const char *kind, const char *s) {
  const int id = ksstack_bsearch_index(&s, labels, compar_str);
  if (id == -1)
    throw fatal_error(
        message_text("graph.c", "can't find %s label '%s' in the label set\n",
                     kind, s) +
        listing(labels));
  return id;
}

int label_set_edge_label_id(const label_set *ls, const char *s) {
  return label_id(ls->edge_labels, "an edge", s);
}

int label_set_vertex_label_id(const label_set *ls, const char *s) {
  return label_id(ls->vertex_labels, "a vertex", s);
}

const char *label_set_edge_label(const label_set *ls, int id) {
  return ksstack_get<char *>(ls->edge_labels, id);
}

const char *label_set_vertex_label(const label_set *ls, int id) {
  return ksstack_get<char *>(ls->vertex_labels, id);
}

int label_set_edge_labels(const label_set *ls) {
  return ls->edge_labels->count;
}

int label_set_vertex_labels(const label_set *ls) {
  return ls->vertex_labels->count;
}

void label_set_build(const char *file, label_set *ls) {
  file_ptr stream(open_file(file, "r"));
  line_buffer line;
  line_buffer label;
  int a;
  int b;
  while (fgetl(line, stream.get())) {
    const int kind =
        graph_parse_line(line.text, &a, &b, &label.text, &label.size);
    if (kind == graph_line_vertex) {
      label_set_add_vertex_label(ls, label.text);
    } else if (kind & graph_line_edge_bit) {
      label_set_add_edge_label(ls, label.text);
      if (!graph_line_is_edge(kind))
        die("graph.c", "wrong edge type (%d)\n", kind);
    } else if (kind != graph_line_comment && kind != graph_line_transaction) {
      die("graph.c", "something wrong\n%s\n", line.text);
    }
  }
}

label_set *label_set_load(const char *name) {
  label_set_ptr ls(label_set_create());
  line_buffer line;
  file_ptr stream(open_file(name, "r"));
  for (int number = 1; fgetl(line, stream.get()); number++) {
    const char kind = line.text[0];
    if (kind == '#')
      continue;
    if (kind != 'E' && kind != 'V')
      die("graph.c", "invalid line at %d\n", number);
    xvector<char> label(static_cast<size_t>(line.size));
    char letter;
    if (sscanf(line.text, "%c %s", &letter, label.data()) < 2)
      die("graph.c", "wrong formatted line at %d\n", number);
    if (kind == 'E')
      label_set_add_edge_label(ls.get(), label.data());
    else
      label_set_add_vertex_label(ls.get(), label.data());
  }
  return ls.release();
}

void label_set_save(const label_set *ls, const char *name) {
  file_ptr stream(open_file(name, "w"));
  fprintf(stream.get(), "# %d edge labels, %d vertex labels\n",
          label_set_edge_labels(ls), label_set_vertex_labels(ls));
  for (int i = 0; i < label_set_edge_labels(ls); i++)
    fprintf(stream.get(), "E %s\n", label_set_edge_label(ls, i));
  for (int i = 0; i < label_set_vertex_labels(ls); i++)
    fprintf(stream.get(), "V %s\n", label_set_vertex_label(ls, i));
}

} // namespace kestro
