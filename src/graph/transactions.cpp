// The transaction reader.
//
// The lines of a transaction are parsed and kept until they are counted, so
// that its graph is allocated once at its exact size, and until the vertex ids
// are known, so that edges may come before their vertices.  Where there are
// over-long lines, counting is a pass of its own, which takes pieces of at most
// 1,023 characters for lines; where it disagrees with parsing, checks end the
// run before anything is written out of bounds.
//
// Two stable passes, by either end, bring the edges into the order of the
// graph's slots.  All costs are proportional to the text.

#include "graph/transactions.h"

#include <algorithm>
#include <numeric>

#include "base/error.h"
#include "base/fgetl.h"
#include "base/xmalloc.h"

namespace kestro {

namespace {

// Tells where a transaction ends: at its second "t" line.
class transaction_end {
public:
  bool reached(int kind) {
    if (kind != graph_line_transaction)
      return false;
    const bool second = inside_;
    inside_ = true;
    return second;
  }

private:
  bool inside_ = false;
};

} // namespace

// Counts slots and vertices; leaves the lines at the next "t" line.
static void count_transaction(text_lines &lines, int *es, int *vs) {
  transaction_end end;
  size_t slots = 0;
  size_t vertices = 0;
  for (;;) {
    const size_t start = lines.position();
    const char *piece = lines.next_piece(line_buffer::first_size);
    if (!piece)
      break;
    const int kind = graph_line_kind(piece);
    if (end.reached(kind)) {
      lines.seek(start);
      break;
    }
    if (kind == graph_line_vertex)
      vertices++;
    else if (graph_line_is_edge(kind))
      slots += kind == graph_line_edge ? 2 : 1;
  }
  *es = int_count(slots);
  *vs = int_count(vertices);
}

// Calls visit with every vertex and edge line; leaves the lines at the next
// "t" line, or where they ended if there was none at all.  False if one of them
// was longer than the pieces that count_transaction() takes.
template <class Visit>
static bool walk_transaction(text_lines &lines, Visit visit) {
  int size = line_buffer::first_size;
  transaction_end end;
  size_t next = 0; // behind the last line that counts
  while (const char *line = lines.next(&size)) {
    const graph_line found = graph_scan_line(line, graph_line_most_label);
    if (end.reached(found.kind))
      break;
    if (found.label)
      visit(found);
    next = lines.position();
  }
  if (next)
    lines.seek(next);
  return size == line_buffer::first_size;
}

// The text of the check is part of the output: it reports over-long lines.
static void set_vertex_ids(const xvector<graph_line> &lines, graph *g) {
  int vertices = 0;
  for (const graph_line &line : lines) {
    if (line.kind != graph_line_vertex)
      continue;
    if (vertices < g->vs)
      g->vid[vertices] = line.a;
    vertices++; // counted on beyond the room, for the check below
  }
  KESTRO_CHECK(vertices == g->vs);
}

transaction_reader::transaction_reader(const label_set *ls)
    : ls_(ls), vertex_labels_(ls->vertex_labels),
      edge_labels_(ls->edge_labels) {}

// Collects the lines in lines_ and counts slots and vertices.  Counting comes
// first where the two differ: its message is the one shown, and its numbers are
// those that the checks compare.
void transaction_reader::parse(text_lines &lines, int *es, int *vs) {
  const size_t start = lines.position();
  const auto recount = [&] {
    const size_t end = lines.position();
    lines.seek(start);
    count_transaction(lines, es, vs);
    lines.seek(end);
  };
  size_t edges = 0;
  lines_.clear();
  bool counted;
  try {
    counted = walk_transaction(lines, [&](const graph_line &line) {
      edges += line.kind != graph_line_vertex;
      lines_.push_back(line);
    });
  } catch (fatal_error &e) {
    lines.locate(&e);
    recount();
    throw;
  }
  *es = int_count(2 * edges);
  *vs = int_count(lines_.size() - edges);
  if (!counted) {
    met_long_lines_ = true;
    recount();
  }
}

graph_ptr transaction_reader::read(text_lines &lines) {
  first_line_ = wrong_line_ = lines.at();
  int es;
  int vs;
  parse(lines, &es, &vs);
  try {
    return graph_of_lines(es, vs);
  } catch (error &e) {
    lines.locate(&e, wrong_line_);
    throw;
  }
}

graph_ptr transaction_reader::graph_of_lines(int es, int vs) {
  graph_ptr g(graph_create(es, vs));
  set_vertex_ids(lines_, g.get());
  begin(g.get());
  for (const graph_line &line : lines_) {
    wrong_line_ = line.label;
    add_line(line);
  }
  wrong_line_ = first_line_;
  finish();
  return g;
}

void transaction_reader::begin(graph *g) {
  g_ = g;
  vertices_ = edges_ = 0;
  records_.resize(static_cast<size_t>(g->es));
  ids_.collect(g);
}

void transaction_reader::add_line(const graph_line &line) {
  if (line.kind == graph_line_vertex)
    add_vertex(line);
  else
    add_edge(line);
}

static std::string_view label_of(const graph_line &line) {
  return {line.label, static_cast<size_t>(line.label_length)};
}

// Gives a new word the number that follows the last.
static int number_word(std::string_view word, label_index *index,
                       xvector<std::string_view> *words) {
  const int number = int_count(words->size());
  index->add(word, number);
  words->push_back(word);
  return number;
}

// The number of a word, where die_of ends in an error for one that the labels
// of others lack.
template <class DieOf>
static int number_of(std::string_view word, label_index *index,
                     xvector<std::string_view> *words, bool is_open,
                     DieOf die_of) {
  const int number = index->find(word);
  if (number != -1)
    return number;
  return is_open ? number_word(word, index, words)
                 : die_of(std::string(word).c_str());
}

int transaction_reader::vertex_label(const graph_line &line) {
  return number_of(label_of(line), &vertex_labels_, &vertex_words_, !ls_,
                   [this](const char *word) {
                     return label_set_vertex_label_id(ls_, word);
                   });
}

int transaction_reader::edge_label(const graph_line &line) {
  return number_of(
      label_of(line), &edge_labels_, &edge_words_, !ls_,
      [this](const char *word) { return label_set_edge_label_id(ls_, word); });
}

void transaction_reader::note_label(const graph_line &line) {
  if (line.kind == graph_line_vertex)
    vertex_label(line);
  else
    edge_label(line);
}

void transaction_reader::add_vertex(const graph_line &line) {
  KESTRO_CHECK(vertices_ < g_->vs);
  g_->vlabel[vertices_++] = vertex_label(line);
}

void transaction_reader::add_edge(const graph_line &line) {
  if (line.a == line.b)
    die("graph.c", "something wrong\n");
  if (!graph_line_is_edge(line.kind))
    die("graph.c", "wrong edge type (%d)\n", line.kind);
  const int from = ids_.find(std::min(line.a, line.b));
  const int to = ids_.find(std::max(line.a, line.b));
  const int id = edge_label(line);
  add_record({from, to, id});
  if (line.kind == graph_line_edge)
    add_record({to, from, id});
}

void transaction_reader::add_record(edge_record record) {
  const int i =
      edges_++; // counted on beyond the room, for the check at the end
  if (i < g_->es)
    records_[static_cast<size_t>(i)] = record;
}

// Lays the collected edges out in the graph.
void transaction_reader::finish() {
  KESTRO_CHECK(vertices_ == g_->vs);
  KESTRO_CHECK(edges_ == g_->es);
  sort_records_by_to();
  fill_slots();
  refuse_duplicates();
  for (int i = 0; i < g_->vs; i++)
    g_->vid[i] = i;
  KESTRO_STRUCTURE(graph_check(g_));
}

void transaction_reader::sort_records_by_to() {
  by_to_.resize(records_.size());
  next_.assign(static_cast<size_t>(g_->vs), 0);
  int *const by_to = by_to_.data();
  int *const next = next_.data();
  for (const edge_record &record : records_)
    next[record.to]++;
  std::exclusive_scan(next, next + g_->vs, next, 0);
  int i = 0;
  for (const edge_record &record : records_)
    by_to[next[record.to]++] = i++;
}

// Takes the records by to, so that every neighbour list comes out ascending.
void transaction_reader::fill_slots() {
  int *const v = g_->v;
  std::fill(v, v + g_->vs + 1, 0);
  for (const edge_record &record : records_)
    v[record.from]++;
  std::exclusive_scan(v, v + g_->vs + 1, v, 0);
  next_.assign(v, v + g_->vs);
  int *const next = next_.data();
  int *const e = g_->e;
  int *const elabel = g_->elabel;
  for (const int i : by_to_) {
    const edge_record record = records_[static_cast<size_t>(i)];
    const int slot = next[record.from]++;
    e[slot] = record.to;
    elabel[slot] = record.label;
  }
}

void transaction_reader::refuse_duplicates() {
  const int *const e = g_->e;
  for (int i = 0; i < g_->vs; i++) {
    const int end = g_->v[i + 1];
    for (int j = g_->v[i] + 1; j < end; j++)
      if (e[j] == e[j - 1])
        die_of_duplicate(i, e[j]);
  }
}

// Of two lines with one edge the second is the wrong one.
void transaction_reader::set_repeating_line(int from, int to) {
  bool first = true;
  size_t i = 0; // record
  for (const graph_line &line : lines_) {
    if (!graph_line_is_edge(line.kind))
      continue;
    const edge_record &x = records_[i];
    if (std::minmax(x.from, x.to) == std::minmax(from, to)) {
      wrong_line_ = line.label;
      if (!first)
        return;
      first = false;
    }
    i += line.kind == graph_line_edge ? 2 : 1;
  }
}

// The edge meant is the one with the smallest label, the first of several.  The
// label shown in the message is the one whose id equals the from index of the
// record read after it: odd, but what recorded messages show.
void transaction_reader::die_of_duplicate(int from, int to) {
  set_repeating_line(from, to);
  if (!ls_)
    die("graph.c", "duplicated edges (%d, %d)\n", from, to);
  const edge_record *meant = nullptr;
  for (const edge_record &x : records_)
    if (x.from == from && x.to == to && (!meant || x.label < meant->label))
      meant = &x;
  const bool last = meant == &records_.back();
  const int id = last ? 0 : (meant + 1)->from;
  die("graph.c", "duplicated edges (%d, %d):%s\n", from, to,
      label_set_edge_label(ls_, id));
}

// Moves the lines to the next "t" line; false at their end.  Reads as into a
// buffer of *size bytes.
static bool seek_transaction(text_lines &lines, int *size) {
  size_t start;
  const char *line;
  do {
    start = lines.position();
    line = lines.next(size);
    if (!line)
      return false;
  } while (graph_line_kind(line) != graph_line_transaction);
  lines.seek(start);
  return true;
}

graph_list *graph_read_transactions(const file_text &text,
                                    const label_set *ls) {
  text_lines lines(text);
  transaction_reader reader(ls);
  int size = line_buffer::first_size;
  graph_list_ptr list(graph_list_new());
  try {
    while (seek_transaction(lines, &size))
      graph_list_push(reader.read(lines), list.get());
  } catch (error &e) {
    lines.locate(&e);
    throw;
  }
  return list.release();
}

// Moves the lines to the first "t" line, with the labels before it noted; false
// where there is none, or where a line is too long.
static bool seek_first_transaction(text_lines &lines,
                                   transaction_reader *reader) {
  int size = line_buffer::first_size;
  for (;;) {
    const size_t start = lines.position();
    const char *line = lines.next(&size);
    if (!line || size != line_buffer::first_size)
      return false;
    const graph_line found = graph_scan_line(line, graph_line_most_label);
    if (found.kind == graph_line_transaction) {
      lines.seek(start);
      return true;
    }
    if (found.label)
      reader->note_label(found);
  }
}

// The transactions with labels as the reader numbers them; null where a line is
// too long, or where there is no transaction.
static graph_list_ptr read_numbering(const file_text &text,
                                     transaction_reader *reader) {
  text_lines lines(text);
  graph_list_ptr list(graph_list_new());
  if (!seek_first_transaction(lines, reader))
    return nullptr;
  int size = line_buffer::first_size;
  while (seek_transaction(lines, &size) && !reader->met_long_lines())
    graph_list_push(reader->read(lines), list.get());
  return reader->met_long_lines() ? nullptr : std::move(list);
}

static graph_list_ptr read_in_two_passes(const file_text &text, label_set *ls) {
  label_set_build(text, ls);
  return graph_list_ptr(graph_read_transactions(text, ls));
}

// Where each of the words stands in a sorted set.
template <class IdOf>
static xvector<int> ids_of(const xvector<std::string_view> &words,
                           const label_set *ls, IdOf id_of) {
  xvector<int> ids;
  ids.reserve(words.size());
  for (const std::string_view word : words)
    ids.push_back(id_of(ls, std::string(word).c_str()));
  return ids;
}

static void renumber(const xvector<int> &ids, int *labels, int count) {
  for (int i = 0; i < count; i++)
    labels[i] = ids[static_cast<size_t>(labels[i])];
}

// What is wrong with a text is told by the first of two passes that meets it.
// Where both meet nothing, memory has run out.
graph_list *graph_read_with_labels(const file_text &text, label_set *ls) {
  transaction_reader reader;
  graph_list_ptr list;
  try {
    list = read_numbering(text, &reader);
  } catch (const error &) {
    const label_set_ptr unused(label_set_create());
    read_in_two_passes(text, unused.get());
    throw;
  }
  if (!list)
    return read_in_two_passes(text, ls).release();
  label_set_add(reader.vertex_words(), reader.edge_words(), ls);
  const xvector<int> vertex_ids =
      ids_of(reader.vertex_words(), ls, label_set_vertex_label_id);
  const xvector<int> edge_ids =
      ids_of(reader.edge_words(), ls, label_set_edge_label_id);
  for (int tid = 0; tid < list->count; tid++) {
    graph *g = graph_list_at(list.get(), tid);
    renumber(vertex_ids, g->vlabel, g->vs);
    renumber(edge_ids, g->elabel, g->es);
  }
  return list.release();
}

} // namespace kestro
