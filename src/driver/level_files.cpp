// Naming, opening, filling and closing the output files.

#include "driver/level_files.h"

#include <string>
#include <utility>

#include "base/error.h"
#include "base/output_file.h"
#include "mining/pattern_output.h"

namespace kestro {

namespace {

// One output, in the settings' own places.
struct output {
  const char *suffix;
  xptr<char> *name;
  file_ptr *stream;
};

} // namespace

// The outputs that o asks for.
static xvector<output> wanted_outputs(options *o) {
  xvector<output> outputs;
  outputs.push_back({".fp", &o->pattern_file, &o->pattern_stream});
  if (o->candidates)
    outputs.push_back({".c.g", &o->candidates_file, &o->candidates_stream});
  if (o->parent_children_list)
    outputs.push_back({".pc", &o->pc_file, &o->pc_stream});
  if (o->tid_list)
    outputs.push_back({".tid", &o->tid_file, &o->tid_stream});
  return outputs;
}

void refuse_input(const file_identity &output, const char *name,
                  const options *o) {
  if (output.is_same(file_identity(o->input_file)))
    throw fatal_error("can't write a file '" + std::string(name) +
                      "': it is the input\n");
}

// Opens an output unless it is one of those that are open.
static void open_output(const output &f, xvector<file_identity> *opened) {
  const char *const name = f.name->get();
  const file_identity found(name);
  for (const file_identity &other : *opened)
    if (found.is_same(other))
      throw fatal_error("can't write a file '" + std::string(name) +
                        "': it is another output\n");
  f.stream->reset(open_file(name, "w+"));
  opened->push_back(file_identity(f.stream->get()));
}

void open_outputs(options *o, FILE *report) {
  xvector<file_identity> opened = {file_identity(report)};
  refuse_input(opened[0], standard_output, o);
  const xvector<output> outputs = wanted_outputs(o);
  for (const output &f : outputs) {
    *f.name = make_output_name(o->input_file, f.suffix);
    refuse_input(file_identity(f.name->get()), f.name->get(), o);
  }
  for (const output &f : outputs)
    open_output(f, &opened);
}

void close_outputs(options *o) {
  close_output(std::move(o->candidates_stream), o->candidates_file.get());
  close_output(std::move(o->pc_stream), o->pc_file.get());
  close_output(std::move(o->tid_stream), o->tid_file.get());
  close_output(std::move(o->pattern_stream), o->pattern_file.get());
}

void level_files::candidates(const sg_set *set) {
  if (!o_->candidates_stream)
    return;
  sg_set_write_patterns(set, ls_, o_->candidates_stream.get());
  flush_output(o_->candidates_stream.get(), o_->candidates_file.get());
}

void level_files::level(const sg_set *set) {
  sg_set_write_patterns(set, ls_, o_->pattern_stream.get());
  flush_output(o_->pattern_stream.get(), o_->pattern_file.get());
  if (o_->parent_children_list) {
    sg_set_write_pc_list(set, o_->pc_stream.get());
    flush_output(o_->pc_stream.get(), o_->pc_file.get());
  }
  if (o_->tid_list) {
    sg_set_write_tid_list(set, o_->tid_stream.get());
    flush_output(o_->tid_stream.get(), o_->tid_file.get());
  }
}

} // namespace kestro
