// The transaction reader on any bytes.
//
// Either a message or graphs in order; and these, written out, read back as
// they are.  Reading labels and graphs in one pass gives the same as in two.
// Lines of a stream are those of a text.

#include "graph/transactions.h"

#include <cstring>

#include "base/fgetl.h"
#include "base/open_file.h"
#include "graph/graph_text.h"
#include "inputs.h"
#include "support/graphs.h"

namespace kestro {

static std::vector<std::string> stream_lines_of(std::string_view bytes) {
  const memory_file file(bytes);
  const file_ptr stream(open_file(file.name(), "r"));
  line_buffer line;
  std::vector<std::string> found;
  while (fgetl(line, stream.get()))
    found.emplace_back(line.text);
  return found;
}

static std::string written(const graph_list *graphs, const label_set *ls) {
  const memory_file file;
  {
    const file_ptr stream(open_file(file.name(), "w"));
    text_buffer out(stream.get());
    graph_writer writer(ls);
    for (int i = 0; i < graphs->count; i++) {
      out.add("t\n");
      writer.write(graph_list_at(graphs, i), out);
    }
  }
  return file.bytes();
}

static void read_again(const graph_list *graphs, const label_set *ls) {
  const std::string bytes = written(graphs, ls);
  if (!has_short_lines(bytes))
    return;
  const graph_list_ptr again(graph_read_transactions(text_of(bytes), ls));
  assert(again->count == graphs->count);
  for (int i = 0; i < graphs->count; i++)
    assert(same_structure(graph_list_at(again.get(), i),
                          graph_list_at(graphs, i)));
}

static bool same_labels(const ksstack *a, const ksstack *b) {
  if (a->count != b->count)
    return false;
  for (int i = 0; i < a->count; i++)
    if (strcmp(ksstack_get<char *>(a, i), ksstack_get<char *>(b, i)) != 0)
      return false;
  return true;
}

// graphs is null where two passes ended with the failure.
static void read_in_one_pass(std::string_view bytes, const graph_list *graphs,
                             const label_set *ls, const std::string &failure) {
  const label_set_ptr labels(label_set_create());
  graph_list_ptr again;
  const std::string found = failure_of([&] {
    again.reset(graph_read_with_labels(text_of(bytes), labels.get()));
  });
  assert(found == failure);
  if (!graphs)
    return;
  assert(same_labels(labels->vertex_labels, ls->vertex_labels));
  assert(same_labels(labels->edge_labels, ls->edge_labels));
  assert(again->count == graphs->count);
  for (int i = 0; i < graphs->count; i++)
    assert(same_structure(graph_list_at(again.get(), i),
                          graph_list_at(graphs, i)));
}

static void fuzz(std::string_view bytes) {
  assert(lines_of(bytes) == stream_lines_of(bytes));
  const label_set_ptr ls(label_set_create());
  graph_list_ptr graphs;
  const std::string failure = failure_of([&] {
    const file_text text = text_of(bytes);
    label_set_build(text, ls.get());
    graphs.reset(graph_read_transactions(text, ls.get()));
  });
  read_in_one_pass(bytes, graphs.get(), ls.get(), failure);
  if (!failure.empty())
    return;
  for (int i = 0; i < graphs->count; i++)
    graph_check(graph_list_at(graphs.get(), i));
  read_again(graphs.get(), ls.get());
}

} // namespace kestro

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  kestro::fuzz(kestro::view_of(data, size));
  return 0;
}
