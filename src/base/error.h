// How kestro fails: by unwinding.  The library never ends the process for
// bad input; it throws, and the program's main() or a binding decides.
#pragma once

#include <cassert>
#include <memory>
#include <string>

#include <kestro/error.h>

#ifdef NDEBUG
#error "kestro keeps its assertions on in every build; do not define NDEBUG"
#endif

namespace kestro {

// Where a message comes from.  Converts from the module's name, so that
// die("graph.c", ...) carries the line of the call.
struct place {
  const char *module; // name shown in front of messages, "graph.c"
  int line;           // source line of the report
  place(const char *name, int at = __builtin_LINE()) : module(name), line(at) {}
};

// The end of a run by bad input, a file or memory.  The text is finished, place
// included; main() prints it as a line and exits with status 1.
class fatal_error : public error {
public:
  // A newline at the end of the text is left out.  The path is that of the file
  // that failed, if one did.
  explicit fatal_error(std::string text, std::string path = {});
  // A text known at compile time apart from its place; allocates nothing, so
  // it can report exhausted memory.
  fatal_error(place at, const char *text) noexcept;
  const char *what() const noexcept override;

private:
  char brief_[96] = ""; // the text, unless error holds it
};

// A failed check that input can reach.  what() is the assertion's report in
// the form of the C library; main() prints it as a line and aborts.
class check_failure : public error {
public:
  explicit check_failure(std::string report); // as the text of a fatal_error
};

// Records in which file and line an error happened; the path, null for none, is
// shared.  Allocates nothing.
void set_error_place(error *e, const std::shared_ptr<const std::string> &path,
                     long long line) noexcept;

// "module:line: " followed by the formatted text.
std::string message_text(place at, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

// Ends the run: throws a fatal_error with the text of message_text().
[[noreturn]] void die(place at, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

// Prints the text of message_text() on standard output and aborts: for the
// few consistency checks whose failure no input explains.
[[noreturn]] void panic(place at, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

// Throws the check_failure of a KESTRO_CHECK.
[[noreturn]] void fail_check(const char *expression, const char *file, int line,
                             const char *function);

} // namespace kestro

// Runs a whole-structure checker (graph_check, sg_set_check) in builds that ask
// for it; they cost more than what they check.
#if KESTRO_CHECKERS
#define KESTRO_STRUCTURE(checker) checker
#else
#define KESTRO_STRUCTURE(checker) static_cast<void>(0)
#endif

// An assertion that input can break: throws check_failure instead of aborting.
#define KESTRO_CHECK(expression)                                               \
  ((expression)                                                                \
       ? static_cast<void>(0)                                                  \
       : ::kestro::fail_check(#expression, __FILE__, __LINE__, __func__))
