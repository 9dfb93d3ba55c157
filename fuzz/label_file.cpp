// The reader of label files on any bytes: either a message or the labels that a
// slow reading finds, and these once more when they are saved and loaded.

#include "graph/label_set.h"

#include <set>

#include "inputs.h"

namespace kestro {

namespace {

struct label_sets {
  std::set<std::string> edge_labels;
  std::set<std::string> vertex_labels;
};

} // namespace

// What a label file holds; false for one that must be refused.
static bool slow_reading(std::string_view bytes, label_sets *sets) {
  for (const std::string &line : lines_of(bytes)) {
    std::string word(line.size() + 1, '\0');
    const int fields = sscanf(line.c_str(), "%*c%s", word.data());
    if (line.starts_with('#'))
      continue;
    if (fields != 1 || (line[0] != 'E' && line[0] != 'V'))
      return false;
    word.resize(strlen(word.c_str()));
    (line[0] == 'E' ? sets->edge_labels : sets->vertex_labels).insert(word);
  }
  return true;
}

// Ids follow from byte order, which is that of the slow set too.
static void compare(const ksstack *labels, const std::set<std::string> &found) {
  assert(labels->count == static_cast<int>(found.size()));
  int id = 0;
  for (const std::string &label : found)
    assert(ksstack_array<char *>(labels)[id++] == label);
}

static std::string saved(const label_set *ls) {
  const memory_file file;
  label_set_save(ls, file.name());
  return file.bytes();
}

static void fuzz(std::string_view bytes) {
  const memory_file file(bytes);
  label_sets expected;
  const bool readable = slow_reading(bytes, &expected);
  label_set_ptr ls;
  const std::string failure =
      failure_of([&] { ls.reset(label_set_load(file.name())); });
  assert(failure.empty() == readable);
  if (!readable)
    return;
  compare(ls->edge_labels, expected.edge_labels);
  compare(ls->vertex_labels, expected.vertex_labels);
  const std::string first = saved(ls.get());
  if (!has_short_lines(first))
    return;
  const memory_file again(first);
  ls.reset(label_set_load(again.name()));
  assert(saved(ls.get()) == first);
}

} // namespace kestro

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  kestro::fuzz(kestro::view_of(data, size));
  return 0;
}
