#include "base/output_file.h"

#include <dlfcn.h>
#include <unistd.h>

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/fatal.h"
#include "support/scratch_folder.h"

static bool tmpfile_fails = false;

// Stands before the C library's for the whole test program.
extern "C" FILE *tmpfile() {
  using function = FILE *();
  if (tmpfile_fails)
    return nullptr;
  return reinterpret_cast<function *>(dlsym(RTLD_NEXT, "tmpfile"))();
}

namespace kestro {
namespace {

// A device whose every write fails for want of space.
file_ptr full_device() { return file_ptr(open_file("/dev/full", "w")); }

} // namespace

TEST(OutputFile, FlushedTextIsInTheFile) {
  const scratch_folder folder;
  const file_ptr stream(open_file(folder.name("x").c_str(), "w"));
  fputs("text", stream.get());
  flush_output(stream.get(), "x");
  EXPECT_EQ(folder.read("x"), "text");
}

TEST(OutputFile, ClosedTextIsInTheFile) {
  const scratch_folder folder;
  file_ptr stream(open_file(folder.name("x").c_str(), "w"));
  fputs("text", stream.get());
  close_output(std::move(stream), "x");
  EXPECT_EQ(folder.read("x"), "text");
}

TEST(OutputFile, ClosingNothingDoesNothing) {
  EXPECT_NO_THROW(close_output(nullptr, "x"));
}

TEST(OutputFile, FinishedStreamStaysOpen) {
  const scratch_folder folder;
  const file_ptr stream(open_file(folder.name("x").c_str(), "w"));
  fputs("a", stream.get());
  finish_output(stream.get(), "x");
  EXPECT_EQ(folder.read("x"), "a");
  fputs("b", stream.get());
  finish_output(stream.get(), "x");
  EXPECT_EQ(folder.read("x"), "ab");
}

TEST(OutputFile, TemporaryFileHasNoNameAndKeepsItsText) {
  const file_ptr stream = open_temporary();
  fputs("text", stream.get());
  rewind(stream.get());
  char text[8] = "";
  EXPECT_STREQ(fgets(text, sizeof text, stream.get()), "text");
}

TEST(OutputFileFatal, FlushThatFails) {
  const file_ptr stream = full_device();
  fputs("text", stream.get());
  EXPECT_EQ(fatal_text([&] { flush_output(stream.get(), "x.fp"); }),
            "can't write a file 'x.fp'\n");
}

TEST(OutputFileFatal, WriteThatFailedBeforeIsNotForgotten) {
  const file_ptr stream = full_device();
  fputs("text", stream.get());
  EXPECT_EQ(fflush(stream.get()), EOF);
  EXPECT_EQ(fatal_text([&] { flush_output(stream.get(), "x.fp"); }),
            "can't write a file 'x.fp'\n");
}

TEST(OutputFileFatal, CloseOfWhatCannotBeWritten) {
  file_ptr stream = full_device();
  fputs("text", stream.get());
  EXPECT_EQ(fatal_text([&] { close_output(std::move(stream), "x.fp"); }),
            "can't write a file 'x.fp'\n");
}

TEST(OutputFileFatal, CloseThatFailsItself) {
  file_ptr stream = full_device();
  close(fileno(stream.get()));
  EXPECT_EQ(fatal_text([&] { close_output(std::move(stream), "x.fp"); }),
            "can't write a file 'x.fp'\n");
}

TEST(OutputFileFatal, FinishOfWhatCannotBeWritten) {
  const file_ptr stream = full_device();
  fputs("text", stream.get());
  EXPECT_EQ(fatal_text([&] { finish_output(stream.get(), standard_output); }),
            "can't write a file 'standard output'\n");
}

TEST(OutputFileFatal, ReadOnlyStream) {
  const file_ptr stream(open_file("/dev/null", "r"));
  fputs("text", stream.get());
  EXPECT_EQ(fatal_text([&] { flush_output(stream.get(), "x"); }),
            "can't write a file 'x'\n");
}

TEST(OutputFileFatal, TemporaryFileThatCannotBeMade) {
  tmpfile_fails = true;
  const std::string text = fatal_text([] { open_temporary(); });
  tmpfile_fails = false;
  EXPECT_EQ(text, "can't open a file 'temporary file'\n");
}

} // namespace kestro
