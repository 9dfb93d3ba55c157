// Live table rows.
//
// Rows of size 3 and more come in two halves, the candidates as soon as they
// are bounded and the frequent patterns once they are written.  The heading
// belongs to row 1, so a run that reports from size 2 on has none.

#include "driver/live_table.h"

#include "base/output_file.h"
#include "driver/report.h"

namespace kestro {

void live_table::candidates(int size) {
  if (silent_)
    return;
  print_table_row(stats_, size, out_, "", mask_candidate_half);
  flush_output(out_, standard_output);
}

void live_table::level(int size) {
  if (silent_)
    return;
  if (size == 1)
    print_table_heading(out_, "", mask_full);
  print_table_row(stats_, size, out_, "",
                  size > 2 ? mask_frequent_half : mask_full);
  flush_output(out_, standard_output);
}

} // namespace kestro
