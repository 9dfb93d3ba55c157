// Debug prints of pattern records.

#include "reference/mining/subgraph_print.h"

#include "reference/graph/graph_print.h"
#include "reference/mining/subgraph.h"

namespace kestro {

static int first_int(const ksstack *s, int i) { return ksstack_get<int>(s, i); }

// "title", then " %d" per element or " NULL", and the end of the line.
static void print_set(const char *title, const ksstack *s, FILE *out) {
  fputs(title, out);
  if (!s)
    fputs(" NULL", out);
  for (int i = 0; s && i < s->count; i++)
    fprintf(out, " %d", first_int(s, i));
  fputc('\n', out);
}

void sg_print(const subgraph *sg, FILE *out) {
  graph_print(sg->g, out);
  fprintf(out, "count: %d\n", sg->count);
  fputs("parent:", out);
  for (int i = 0; i < sg_kept_size(sg); i++)
    fprintf(out, " %d", sg_kept_at(sg, i)->pid);
  fputc('\n', out);
  print_set("child:", sg->child, out);
  fputs("pid:", out);
  for (int i = 0; i < sg_pid_size(sg); i++)
    fprintf(out, " %d", sg_pid_at(sg, i));
  fputc('\n', out);
}

static void print_ids(const ksstack *s, FILE *out) {
  for (int i = 0; s && i < s->count; i++)
    fprintf(out, "%d ", first_int(s, i));
  fputc('\n', out);
}

void sg_print_child(const subgraph *sg, FILE *out) {
  fputs("child: ", out);
  if (sg->child)
    print_ids(sg->child, out);
  else
    fputs("NULL\n", out);
}

void sg_print_pid(const subgraph *sg, FILE *out) {
  for (int i = 0; i < sg_pid_size(sg); i++)
    fprintf(out, "%d ", sg_pid_at(sg, i));
  fputc('\n', out);
}

void sg_print_cover(const subgraph *sg, FILE *out) {
  print_ids(sg->cover, out);
}

void sg_print_parent(const sg_parent *entry, FILE *out) {
  fprintf(out, "%d(%d,%d): ", entry->pid, entry->u, entry->v);
  for (int i = 0; i < entry->vs; i++)
    fprintf(out, "%d ", entry->image(i));
  fputc('\n', out);
}

} // namespace kestro
