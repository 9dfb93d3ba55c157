// Naming, opening, filling and closing the output files.

#include "driver/level_files.h"

#include "mining/pattern_output.h"

namespace kestro {

static void open_output(const options *o, const char *suffix, xptr<char> *name,
                        file_ptr *stream) {
  *name = make_output_name(o->input_file, suffix);
  stream->reset(open_file(name->get(), "w+"));
}

void open_outputs(options *o) {
  open_output(o, ".fp", &o->pattern_file, &o->pattern_stream);
  if (o->candidates)
    open_output(o, ".c.g", &o->candidates_file, &o->candidates_stream);
  if (o->parent_children_list)
    open_output(o, ".pc", &o->pc_file, &o->pc_stream);
  if (o->tid_list)
    open_output(o, ".tid", &o->tid_file, &o->tid_stream);
}

void close_outputs(options *o) {
  o->candidates_stream.reset();
  o->pc_stream.reset();
  o->tid_stream.reset();
  o->pattern_stream.reset();
}

void level_files::candidates(const sg_set *set) {
  if (o_->candidates_stream)
    sg_set_write_patterns(set, ls_, o_->candidates_stream.get());
}

void level_files::level(const sg_set *set) {
  sg_set_write_patterns(set, ls_, o_->pattern_stream.get());
  if (o_->parent_children_list)
    sg_set_write_pc_list(set, o_->pc_stream.get());
  if (o_->tid_list)
    sg_set_write_tid_list(set, o_->tid_stream.get());
}

} // namespace kestro
