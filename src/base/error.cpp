// Failure by unwinding: the texts of messages and the exceptions that carry
// them.
//
// A message is finished where it is raised, place and newline included, so
// that whoever catches it only prints.  Long texts (a message may quote a whole
// input line) live in a shared string, because an exception must be copyable
// without throwing; the report of exhausted memory uses a fixed buffer.

#include "base/error.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace kestro {

static std::string format_text(const char *format, va_list args) {
  va_list again;
  va_copy(again, args);
  const int length = vsnprintf(nullptr, 0, format, args);
  std::string text(static_cast<size_t>(length < 0 ? 0 : length), '\0');
  vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

static std::string placed_text(place at, const char *format, va_list args) {
  std::string text = std::string(at.module) + ":" + std::to_string(at.line);
  return text + ": " + format_text(format, args);
}

fatal_error::fatal_error(std::string text)
    : long_(std::make_shared<const std::string>(std::move(text))) {}

fatal_error::fatal_error(place at, const char *text) noexcept {
  snprintf(brief_, sizeof brief_, "%s:%d: %s", at.module, at.line, text);
}

const char *fatal_error::what() const noexcept {
  return long_ ? long_->c_str() : brief_;
}

check_failure::check_failure(std::string report)
    : report_(std::make_shared<const std::string>(std::move(report))) {}

const char *check_failure::what() const noexcept { return report_->c_str(); }

std::string message_text(place at, const char *format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = placed_text(at, format, args);
  va_end(args);
  return text;
}

void die(place at, const char *format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = placed_text(at, format, args);
  va_end(args);
  throw fatal_error(std::move(text));
}

void panic(place at, const char *format, ...) {
  va_list args;
  va_start(args, format);
  printf("%s:%d: ", at.module, at.line);
  vprintf(format, args);
  va_end(args);
  fflush(stdout);
  abort();
}

void fail_check(const char *expression, const char *file, int line,
                const char *function) {
  throw check_failure(std::string(file) + ":" + std::to_string(line) + ": " +
                      function + ": Assertion `" + expression + "' failed.\n");
}

} // namespace kestro
