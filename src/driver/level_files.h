// The output files of a run.
#pragma once

#include <kestro/mine.h>

#include "base/file_identity.h"
#include "base/output_lock.h"
#include "base/xmalloc.h"
#include "driver/options.h"

namespace kestro {

// Dies with "can't write a file 'NAME': it is the input" when the output is
// o->input_file, by whatever name.
void refuse_input(const file_identity &output, const char *name,
                  const output_settings *o);

// Names the outputs that o asks for after o->input_file, and opens them; report
// is the stream of the run's report.  Returns the right to write them, to be
// held until they are complete.  Dies, and leaves what all outputs hold, when
// one of them or the report is the input; when two outputs are one file ("it is
// another output"); when another run is writing an output; when one is a pipe
// or a socket; and ("can't read a file") when one is no regular file and the
// run, for maximal patterns, would have to read it back.
[[nodiscard]] xvector<output_lock> open_outputs(options *o, FILE *report);
// Dies with "can't write a file" when an output has not been written whole.
void close_outputs(options *o);

// Writes levels and candidates to the outputs that are open.  Dies with "can't
// write a file" at the end of the level that could not be written.
class level_files {
public:
  explicit level_files(const output_streams *o) : o_(o) {}
  void write_candidates(const level &generated);
  void write_level(const level &found);

private:
  const output_streams *o_;
};

} // namespace kestro
