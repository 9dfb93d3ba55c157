// Files being written: every failure of a write is reported.
#pragma once

#include <cstdio>

#include "base/open_file.h"

namespace kestro {

// What messages call the files that have no name of their own.
constexpr char standard_output[] = "standard output";
constexpr char temporary_file[] = "temporary file";

// Makes a regular file that was opened for writing empty; nothing else is
// changed.  Dies with "can't write a file 'NAME'".
void empty_output(FILE *stream, const char *name);

// Hands what was written to the file.  Dies with "can't write a file 'NAME'"
// when that fails, or anything written to the stream before has failed.
void flush_output(FILE *stream, const char *name);

// The same, and closes the stream, also when it dies; nothing for null.
void close_output(file_ptr stream, const char *name);

// The same for a stream that stays open.
void finish_output(FILE *stream, const char *name);

// A new file for reading and writing that is deleted when closed.  Dies with
// "can't open a file 'temporary file'".
file_ptr open_temporary();

} // namespace kestro
