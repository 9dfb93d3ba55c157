// The reader of label files on any bytes: either a message or a sorted set
// without repeats, which is the same once saved and loaded again.

#include "graph/label_set.h"

#include "inputs.h"

namespace kestro {

static std::string saved(const label_set *ls) {
  const memory_file file;
  label_set_save(ls, file.name());
  return file.bytes();
}

static void check_order(const ksstack *labels) {
  for (int i = 1; i < labels->count; i++)
    assert(strcmp(ksstack_array<char *>(labels)[i - 1],
                  ksstack_array<char *>(labels)[i]) < 0);
}

static void fuzz(std::string_view bytes) {
  const memory_file file(bytes);
  label_set_ptr ls;
  const std::string failure =
      failure_of([&] { ls.reset(label_set_load(file.name())); });
  if (!failure.empty())
    return;
  check_order(ls->edge_labels);
  check_order(ls->vertex_labels);
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
