// The debug print of an adjmat.
//
// Every number of the table stands right-aligned in one common width.  Columns
// and lines follow the positions, so the table shows the matrix as perm
// arranges it.  Nothing in mining calls this.

#include "reference/cl/adjmat_print.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "base/xmalloc.h"

namespace kestro {

namespace {

// The largest magnitude and the presence of a sign among numbers.
struct number_range {
  int largest = 0;
  bool negative = false;
  void add(int number) {
    largest = std::max(largest, abs(number));
    negative |= number < 0;
  }
};

// Writes the lines of the table.
struct table_printer {
  const adjmat *m;
  int width; // columns per number
  FILE *out;

  void number(int value, const char *after) const {
    fprintf(out, "%*d%s", width, value, after);
  }
  void list(const char *title, const int *values, int count) const {
    fputs(title, out);
    for (int i = 0; i < count; i++)
      number(values[i], i + 1 < count ? " " : "\n");
  }
  const cl_vertex *at(int position) const {
    return &m->vertex[m->perm[position]];
  }
  // A line of value(i) for every position i.
  template <class Value> void header(const char *title, Value value) const {
    fprintf(out, "%*s %*s|", width, "", width, title);
    for (int i = 0; i < m->vs; i++)
      number(value(i), i + 1 < m->vs ? " " : "|\n");
  }
  void rule() const {
    const std::string dashes(static_cast<size_t>(width), '-');
    fprintf(out, "%s-%s+", dashes.c_str(), dashes.c_str());
    for (int i = 0; i < m->vs; i++)
      fprintf(out, "%s%s", dashes.c_str(), i + 1 < m->vs ? "-" : "+\n");
  }
  void neighbours(const cl_vertex *v) const {
    if (v->degree == 0)
      fputc('\n', out);
    for (int k = 0; k < v->degree; k++) {
      const char *after = k + 1 < v->degree ? "" : "\n";
      const cl_edge edge = v->adj[k];
      if (edge.v)
        fprintf(out, " %d->%d(%d)%s", edge.label, edge.v->part,
                m->iperm[edge.v->row], after);
      else
        fprintf(out, " null%s", after);
    }
  }
  void line(int position) const {
    const cl_vertex *v = at(position);
    number(position, " ");
    number(v->id, "|");
    for (int c = 0; c < m->vs; c++)
      number(m->rows[v->row][m->perm[c]], c + 1 < m->vs ? " " : "|");
    neighbours(v);
  }
};

} // namespace

static void add_vertex(const cl_vertex *v, number_range *range) {
  range->add(v->id);
  range->add(v->degree);
  range->add(v->label);
  range->add(v->row);
  range->add(v->part);
  for (int k = 0; k < v->degree; k++)
    range->add(v->adj[k].label);
}

int cl_print_width(const adjmat *m) {
  number_range range;
  range.add(m->parts - 1);
  for (int i = 0; i < m->vs; i++) {
    add_vertex(&m->vertex[i], &range);
    for (int j = 0; j < m->vs; j++)
      range.add(m->rows[i][j]);
  }
  // A lone 0 has no logarithm, but one digit.
  const int digits = static_cast<int>(log10(std::max(range.largest, 1))) + 1;
  return digits + range.negative;
}

void cl_print_adjmat(const adjmat *m, FILE *out) {
  const table_printer table = {m, cl_print_width(m), out};
  table.list("perm:", m->perm, m->vs);
  table.list("part :", m->part, m->parts + 1);
  fputc('\n', out);
  table.header("#", [](int i) { return i; });
  table.header("r", [&](int i) { return table.at(i)->row; });
  table.header("i", [&](int i) { return table.at(i)->id; });
  table.header("d", [&](int i) { return table.at(i)->degree; });
  table.header("l", [&](int i) { return table.at(i)->label; });
  table.header("p", [&](int i) { return table.at(i)->part; });
  table.rule();
  for (int r = 0; r < m->vs; r++)
    table.line(r);
}

void cl_print_graph(const graph *g, FILE *out) {
  fprintf(out, "key: %x\n", g->key);
  const xptr<adjmat> m(static_cast<adjmat *>(xmalloc(cl_adjmat_size(g->vs))));
  cl_init_adjmat(m.get(), g->vs);
  cl_graph_to_adjmat(g, m.get());
  cl_print_adjmat(m.get(), out);
}

} // namespace kestro
