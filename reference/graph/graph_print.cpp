// The debug print of a graph.
//
// Every vertex takes as many cells as it has slots, so the rows of vertex data
// and of slot data stand above one another.  Per-vertex values fill the last
// cell of their vertex.

#include "reference/graph/graph_print.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "base/xmalloc.h"

namespace kestro {

// Every value of the graph that is printed, as stored, in no particular order.
static xvector<int> printed_values(const graph *g, bool with_ids) {
  xvector<int> values = {g->es, g->vs};
  for (int i = 0; i < g->vs; i++) {
    values.push_back(g->v[i]);
    values.push_back(g->vlabel[i]);
    if (with_ids)
      values.push_back(g->vid[i]);
  }
  for (int j = 0; j < g->es; j++) {
    values.push_back(g->e[j]);
    values.push_back(g->elabel[j]);
  }
  return values;
}

// Decimal digits of a value, its mark or sign taken off.
static int digits(int value) {
  const int x = graph_unmark(value);
  return x ? 1 + static_cast<int>(log10(x)) : 1;
}

static int column_width(const xvector<int> &values) {
  int width = 0;
  int negative = 0;
  for (const int value : values) {
    width = std::max(width, digits(value));
    negative |= value < 0;
  }
  return width + negative;
}

namespace {

// Writes rows of cells, one group of cells per vertex.
struct row_printer {
  const graph *g;
  int width; // columns per cell
  FILE *out;

  // A row whose cell of slot j (the last one of vertex i or not) shows what
  // cell(i, j, last) prints.
  template <class Cell> void row(const char *title, Cell cell) const {
    fputs(title, out);
    for (int i = 0; i < g->vs; i++) {
      const int end = graph_unmark(g->v[i + 1]);
      for (int j = graph_unmark(g->v[i]); j < end; j++) {
        cell(i, j, j + 1 == end);
        if (j + 1 < end)
          fputc(' ', out);
      }
      if (i + 1 < g->vs)
        fputc('|', out);
    }
  }
  // A row of one value per vertex, in its last cell.
  void vertices(const char *title, const int *values) const {
    row(title, [&](int i, int, bool last) {
      if (last)
        fprintf(out, "%*d", width, values ? values[i] : i);
      else
        fprintf(out, "%*s", width, "");
    });
  }
  // A row of one value per slot.
  void slots(const char *title, const int *values) const {
    row(title,
        [&](int, int j, bool) { fprintf(out, "%*d", width, values[j]); });
    fputc('\n', out);
  }
};

} // namespace

void graph_print(const graph *g, FILE *out) {
  if (g->es == 0 && g->vs == 0) {
    fputs("key: NULL\n", out);
    return;
  }
  bool with_ids = false;
  for (int i = 0; i < g->vs; i++)
    with_ids |= g->vid && g->vid[i] != i;
  const int width = column_width(printed_values(g, with_ids));
  const row_printer printer = {g, width, out};

  fprintf(out, "key: %x\n", g->key);
  printer.vertices("#: ", nullptr);
  fputc('\n', out);
  if (with_ids) {
    printer.vertices("id:", g->vid);
    fputc('\n', out);
  }
  printer.vertices("v: ", g->v);
  if (g->v[g->vs] != g->es)
    fprintf(out, "||%d", g->v[g->vs]);
  fputc('\n', out);
  printer.vertices("V: ", g->vlabel);
  fputc('\n', out);
  printer.slots("e: ", g->e);
  printer.slots("E: ", g->elabel);
}

} // namespace kestro
