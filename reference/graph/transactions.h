// Transactions from files and streams, read in three passes each.
#pragma once

#include <cstdio>

#include "graph/graph.h"
#include "graph/graph_list.h"
#include "graph/label_set.h"

namespace kestro {

// The transactions of a file, as those of its text.
graph_list *graph_read_transactions(const char *name, const label_set *ls);

// A new graph read from a stream that stands at a "t" line; the stream is left
// at the next one.  The second form reads the first transaction of a file (an
// empty graph when it has none).
graph *graph_read_next_transaction(FILE *stream, const label_set *ls);
graph *graph_read_transaction_file(const char *name, const label_set *ls);

// The three passes over one transaction, each from its "t" line on.
// Counts its slots and vertices; leaves the stream at the next "t" line.
void graph_count_transaction(FILE *stream, int *es, int *vs);
// Stores the ids of all vertex lines in vid, so that edges can refer to
// vertices whose lines come later; leaves the stream behind the next "t" line.
// Fails the check "vertices == g->vs" when their number is not the counted one.
void set_vertex_ids(FILE *stream, graph *g);
// Fills the rest with the help of the ids, sets vid to the vertices' positions,
// and leaves the stream at the next "t" line.
void graph_fill_transaction(FILE *stream, graph *g, const label_set *ls);

} // namespace kestro
