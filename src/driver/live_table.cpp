// Live table rows.
//
// Rows of size 3 and more come in two halves, the candidates as soon as they
// are bounded and the frequent patterns once they are written.  The heading
// belongs to row 1, so a run that reports from size 2 on has none.

#include "driver/live_table.h"

#include "base/output_file.h"
#include "driver/report.h"

namespace kestro {

void live_table::show(const progress &now) {
  if (o_->maximal || now.size < o_->minsize)
    return;
  if (now.at == progress::step::counting && now.done == 0)
    show_candidates(now);
  if (now.at == progress::step::complete)
    show_patterns(now);
}

void live_table::show_candidates(const progress &now) {
  stats_set(&seen_, stats_candidates, now.size,
            static_cast<int>(now.candidates));
  print_table_row(&seen_, now.size, out_, "", mask_candidate_half);
  flush_output(out_, standard_output);
}

void live_table::show_patterns(const progress &now) {
  stats_set(&seen_, stats_frequent, now.size, static_cast<int>(now.done));
  if (now.size == 1)
    print_table_heading(out_, "", mask_full);
  print_table_row(&seen_, now.size, out_, "",
                  now.size > 2 ? mask_frequent_half : mask_full);
  flush_output(out_, standard_output);
}

} // namespace kestro
