// Naming, opening, filling and closing the output files.

#include "driver/level_files.h"

#include <string>
#include <utility>

#include "base/error.h"
#include "base/open_file.h"
#include "base/output_file.h"
#include "library/access.h"
#include "library/level_data.h"
#include "mining/pattern_output.h"

namespace kestro {

namespace {

// One output, in the settings' own places.
struct output {
  const char *suffix;
  xptr<char> *name;
  file_ptr *stream;
  bool is_read_back; // when the maximal patterns are selected
};

} // namespace

// The outputs that o asks for.
static xvector<output> wanted_outputs(options *o) {
  xvector<output> outputs;
  const bool maximal = o->maximal;
  outputs.push_back({".fp", &o->pattern_file, &o->pattern_stream, maximal});
  if (o->candidates)
    outputs.push_back(
        {".c.g", &o->candidates_file, &o->candidates_stream, false});
  if (o->parent_children_list)
    outputs.push_back({".pc", &o->pc_file, &o->pc_stream, maximal});
  if (o->tid_list)
    outputs.push_back({".tid", &o->tid_file, &o->tid_stream, maximal});
  return outputs;
}

void refuse_input(const file_identity &output, const char *name,
                  const output_settings *o) {
  if (output.is_same(file_identity(o->input_file)))
    throw fatal_error("can't write a file '" + std::string(name) +
                      "': it is the input\n");
}

// Adds a file to those of the run, unless it is one of them.
static void add_output(const file_identity &found, const char *name,
                       xvector<file_identity> *files) {
  for (const file_identity &other : *files)
    if (found.is_same(other))
      throw fatal_error("can't write a file '" + std::string(name) +
                        "': it is another output\n");
  files->push_back(found);
}

// Names the outputs, and refuses a file that is the input or another output.
static void name_outputs(const xvector<output> &outputs,
                         const file_identity &report, const options *o) {
  refuse_input(report, standard_output, o);
  xvector<file_identity> files = {report};
  for (const output &f : outputs) {
    *f.name = make_output_name(o->input_file, f.suffix);
    const char *const name = f.name->get();
    const file_identity found(name);
    refuse_input(found, name, o);
    refuse_pipe(name);
    add_output(found, name, &files);
  }
}

// The right to write each of the named outputs.  Locking creates their files.
static xvector<output_lock> lock_outputs(const xvector<output> &outputs,
                                         const file_identity &report) {
  xvector<file_identity> files = {report};
  xvector<output_lock> locks;
  locks.reserve(outputs.size());
  for (const output &f : outputs) {
    const char *const name = f.name->get();
    // Checked again: two names may be links to one file that did not exist when
    // the outputs were named, and that locking the first name has created.
    add_output(file_identity(name), name, &files);
    locks.emplace_back(name);
    files.back() = file_identity(name);
    if (f.is_read_back && !files.back().is_regular())
      throw fatal_error("can't read a file '" + std::string(name) + "'\n");
  }
  return locks;
}

xvector<output_lock> open_outputs(options *o, FILE *report) {
  const file_identity report_file(report);
  const xvector<output> outputs = wanted_outputs(o);
  name_outputs(outputs, report_file, o);
  xvector<output_lock> locks = lock_outputs(outputs, report_file);
  for (const output &f : outputs)
    f.stream->reset(open_file(f.name->get(), "r+"));
  for (const output &f : outputs)
    empty_output(f.stream->get(), f.name->get());
  return locks;
}

void close_outputs(options *o) {
  close_output(std::move(o->candidates_stream), o->candidates_file.get());
  close_output(std::move(o->pc_stream), o->pc_file.get());
  close_output(std::move(o->tid_stream), o->tid_file.get());
  close_output(std::move(o->pattern_stream), o->pattern_file.get());
}

void level_files::write_candidates(const level &generated) {
  if (!o_->candidates_stream)
    return;
  const level_data *data = access::data_of(generated);
  sg_set_write_patterns(data->source, data->labels,
                        o_->candidates_stream.get());
  flush_output(o_->candidates_stream.get(), o_->candidates_file.get());
}

void level_files::write_level(const level &found) {
  const level_data *data = access::data_of(found);
  sg_set_write_patterns(data->source, data->labels, o_->pattern_stream.get());
  flush_output(o_->pattern_stream.get(), o_->pattern_file.get());
  if (o_->pc_stream) {
    sg_set_write_pc_list(data->source, o_->pc_stream.get());
    flush_output(o_->pc_stream.get(), o_->pc_file.get());
  }
  if (o_->tid_stream) {
    sg_set_write_tid_list(data->source, o_->tid_stream.get());
    flush_output(o_->tid_stream.get(), o_->tid_file.get());
  }
}

} // namespace kestro
