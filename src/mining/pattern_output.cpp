// The writers of pattern, TID-list and PC-list files.
//
// A pattern is named size-id in all of them: its edges, and its position in its
// level's set.  The text goes to the file in large pieces, all of a level by
// its end.

#include "mining/pattern_output.h"

#include "base/error.h"
#include "graph/graph_text.h"
#include "mining/expect_records.h"
#include "mining/parents.h"

namespace kestro {

static int size_of(const subgraph *sg) { return sg->g->es / 2; }

static void add_name(int size, int id, text_buffer &out) {
  out.add(size);
  out.add('-');
  out.add(id);
}

void sg_set_write_patterns(const sg_set *set, const label_set *ls,
                           FILE *stream) {
  if (!stream)
    die("subgraph.c", "no output file specified\n");
  text_buffer out(stream);
  graph_writer graphs(ls);
  for (int id = 0; id < sg_set_size(set); id++) {
    expect_records(set, id, record_part::graph);
    const subgraph *sg = sg_set_get(set, id);
    out.add("t # ");
    add_name(size_of(sg), id, out);
    out.add(", ");
    out.add(sg->count);
    out.add('\n');
    graphs.write(sg->g, out);
  }
  out.flush();
}

void sg_set_write_tid_list(const sg_set *set, FILE *stream) {
  if (!stream)
    die("subgraph.c", "no output file specified\n");
  text_buffer out(stream);
  for (int id = 0; id < sg_set_size(set); id++) {
    const subgraph *sg = sg_set_get(set, id);
    add_name(size_of(sg), id, out);
    for (int i = 0; i < sg_tid_size(sg); i++) {
      out.add(' ');
      out.add(sg_tid_at(sg, i));
    }
    out.add('\n');
  }
  out.flush();
}

void sg_set_write_pc_list(const sg_set *set, FILE *stream) {
  if (!stream)
    die("subgraph.c", "no output file specified\n");
  text_buffer out(stream);
  xvector<int> parents;
  for (int id = 0; id < sg_set_size(set); id++) {
    expect_records(set, id, record_part::parents);
    const subgraph *sg = sg_set_get(set, id);
    add_name(size_of(sg), id, out);
    sg_parent_ids(sg, &parents);
    for (const int pid : parents) {
      out.add(' ');
      add_name(size_of(sg) - 1, pid, out);
    }
    out.add('\n');
  }
  out.flush();
}

} // namespace kestro
