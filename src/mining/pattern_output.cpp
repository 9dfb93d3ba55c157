// The writers of pattern, TID-list and PC-list files.
//
// A pattern is named size-id in all of them: its edges, and its position in its
// level's set.

#include "mining/pattern_output.h"

#include "base/error.h"
#include "graph/graph_text.h"

namespace kestro {

static int size_of(const subgraph *sg) { return sg->g->es / 2; }

void sg_set_write_patterns(const sg_set *set, const label_set *ls,
                           FILE *stream) {
  if (!stream)
    die("subgraph.c", "no output file specified\n");
  for (int id = 0; id < sg_set_size(set); id++) {
    const subgraph *sg = sg_set_get(set, id);
    fprintf(stream, "t # %d-%d, %d\n", size_of(sg), id, sg->count);
    graph_save(sg->g, ls, stream);
    fflush(stream);
  }
  fflush(stream);
}

void sg_set_write_tid_list(const sg_set *set, FILE *stream) {
  if (!stream)
    die("subgraph.c", "no output file specified\n");
  for (int id = 0; id < sg_set_size(set); id++) {
    const subgraph *sg = sg_set_get(set, id);
    fprintf(stream, "%d-%d", size_of(sg), id);
    for (int i = 0; i < sg_tid_size(sg); i++)
      fprintf(stream, " %d", sg_tid_at(sg, i));
    fputc('\n', stream);
    fflush(stream);
  }
  fflush(stream);
}

void sg_set_write_pc_list(const sg_set *set, FILE *stream) {
  if (!stream)
    die("subgraph.c", "no output file specified\n");
  for (int id = 0; id < sg_set_size(set); id++) {
    const subgraph *sg = sg_set_get(set, id);
    fprintf(stream, "%d-%d", size_of(sg), id);
    for (int i = 0; i < sg_pid_size(sg); i++)
      fprintf(stream, " %d-%d", size_of(sg) - 1, sg_pid_at(sg, i));
    fputc('\n', stream);
    fflush(stream);
  }
  fflush(stream);
}

} // namespace kestro
