// The output files of a run.
#pragma once

#include "driver/options.h"
#include "driver/seams.h"
#include "graph/label_set.h"

namespace kestro {

// Names the outputs that o asks for after o->input_file, and opens them.
void open_outputs(options *o);
void close_outputs(options *o);

// Writes levels and candidates to the outputs that are open.
class level_files : public level_receiver {
public:
  level_files(const options *o, const label_set *ls) : o_(o), ls_(ls) {}
  void candidates(const sg_set *set) override;
  void level(const sg_set *set) override;

private:
  const options *o_;
  const label_set *ls_;
};

} // namespace kestro
