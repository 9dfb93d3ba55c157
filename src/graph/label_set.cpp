// Label sets and label files.
//
// Either kind is a sorted stack of strings searched by bisection, so the ids
// follow from the set alone: the order of lines and repeats do not matter.  A
// transaction file's labels are collected through a hash table, which costs a
// look-up per line, and sorted once at its end.

#include "graph/label_set.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "base/comparators.h"
#include "base/error.h"
#include "base/fgetl.h"
#include "base/open_file.h"
#include "base/output_file.h"
#include "base/text_lines.h"
#include "base/xmalloc.h"
#include "graph/graph_line.h"
#include "graph/label_index.h"

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

// A new string with the bytes of s.
static xptr<char> copy_of(std::string_view s) {
  xptr<char> copy(static_cast<char *>(xmalloc(s.size() + 1)));
  s.copy(copy.get(), s.size());
  copy.get()[s.size()] = '\0';
  return copy;
}

// Appends a copy of s, wherever it belongs.
static void push_label(std::string_view s, ksstack *labels) {
  xptr<char> copy = copy_of(s);
  const char *address = copy.get();
  ksstack_push(&address, labels);
  copy.release();
}

static void add_label(ksstack *labels, const char *s) {
  if (ksstack_bsearch(&s, labels, compar_str))
    return;
  xptr<char> copy = copy_of(s);
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

// Adds words that labels lacks.
static void add_words(const xvector<std::string_view> &words, ksstack *labels) {
  for (const std::string_view word : words)
    push_label(word, labels);
  ksstack_sort(labels, compar_str);
}

void label_set_add(const xvector<std::string_view> &vertex_labels,
                   const xvector<std::string_view> &edge_labels,
                   label_set *ls) {
  add_words(vertex_labels, ls->vertex_labels);
  add_words(edge_labels, ls->edge_labels);
}

namespace {

// Collects the new labels of one kind, each once; they join the set together.
class label_collector {
public:
  explicit label_collector(ksstack *labels) : labels_(labels), index_(labels) {}

  // The word stays where it is until finish().
  void add(std::string_view word) {
    if (index_.find(word) != -1)
      return;
    const auto known = static_cast<size_t>(labels_->count);
    index_.add(word, int_count(known + words_.size()));
    words_.push_back(word);
  }

  void finish() { add_words(words_, labels_); }

private:
  ksstack *labels_;
  label_index index_;
  xvector<std::string_view> words_;
};

} // namespace

static void collect_labels(text_lines &lines, label_set *ls) {
  int size = line_buffer::first_size;
  label_collector vertex_labels(ls->vertex_labels);
  label_collector edge_labels(ls->edge_labels);
  while (const char *line = lines.next(&size)) {
    const graph_line found = graph_scan_line(line, graph_line_most_label);
    const std::string_view label(found.label,
                                 static_cast<size_t>(found.label_length));
    if (found.kind == graph_line_vertex) {
      vertex_labels.add(label);
    } else if (found.kind & graph_line_edge_bit) {
      edge_labels.add(label);
      if (!graph_line_is_edge(found.kind))
        die("graph.c", "wrong edge type (%d)\n", found.kind);
    } else if (found.kind != graph_line_comment &&
               found.kind != graph_line_transaction) {
      die("graph.c", "something wrong\n%s\n", line);
    }
  }
  vertex_labels.finish();
  edge_labels.finish();
}

void label_set_build(const file_text &text, label_set *ls) {
  text_lines lines(text);
  try {
    collect_labels(lines, ls);
  } catch (error &e) {
    lines.locate(&e);
    throw;
  }
}

// The word behind the letter and blanks of a label file's line.
static std::string_view label_in(const char *line) {
  static const char blanks[] = " \t\n\v\f\r";
  const char *const label = line + 1 + strspn(line + 1, blanks);
  return {label, strcspn(label, blanks)};
}

static void load_labels(text_lines &lines, label_set *ls) {
  int size = line_buffer::first_size;
  label_collector edge_labels(ls->edge_labels);
  label_collector vertex_labels(ls->vertex_labels);
  for (int number = 1; const char *line = lines.next(&size); number++) {
    const char kind = line[0];
    if (kind == '#')
      continue;
    if (kind != 'E' && kind != 'V')
      die("graph.c", "invalid line at %d\n", number);
    const std::string_view label = label_in(line);
    if (label.empty())
      die("graph.c", "wrong formatted line at %d\n", number);
    (kind == 'E' ? edge_labels : vertex_labels).add(label);
  }
  edge_labels.finish();
  vertex_labels.finish();
}

label_set *label_set_load(const char *name) {
  label_set_ptr ls(label_set_create());
  const file_text text = read_file(name);
  text_lines lines(text);
  try {
    load_labels(lines, ls.get());
  } catch (error &e) {
    lines.locate(&e);
    throw;
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
  close_output(std::move(stream), name);
}

} // namespace kestro
