// Failure by unwinding: the texts of messages and the exceptions that carry
// them.
//
// A message is finished where it is raised, place included, so that whoever
// catches it only prints.  Texts live in a shared string, because an exception
// must be copyable without throwing; the report of exhausted memory uses a
// fixed buffer.  An error shares the path of the file with the reader of the
// file, so that its place can be recorded without memory.

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

// Null for the empty string, which most errors have for their path.
static std::shared_ptr<const std::string> shared(std::string s) {
  return s.empty() ? nullptr
                   : std::make_shared<const std::string>(std::move(s));
}

static std::string without_newline(std::string text) {
  if (!text.empty() && text.back() == '\n')
    text.pop_back();
  return text;
}

error::error(std::string text, std::string path, long long line)
    : text_(std::make_shared<const std::string>(std::move(text))),
      path_(shared(std::move(path))), line_(line) {}

// Without a text it is a fatal_error's copy as its base class.
const char *error::what() const noexcept {
  return text_ ? text_->c_str() : "not enough memory";
}

const std::string &error::path() const noexcept {
  static const std::string none;
  return path_ ? *path_ : none;
}

void set_error_place(error *e, const std::shared_ptr<const std::string> &path,
                     long long line) noexcept {
  e->path_ = path;
  e->line_ = line;
}

fatal_error::fatal_error(std::string text, std::string path)
    : error(without_newline(std::move(text)), std::move(path)) {}

fatal_error::fatal_error(place at, const char *text) noexcept {
  snprintf(brief_, sizeof brief_, "%s:%d: %s", at.module, at.line, text);
}

const char *fatal_error::what() const noexcept {
  return *brief_ ? brief_ : error::what();
}

check_failure::check_failure(std::string report)
    : error(without_newline(std::move(report))) {}

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
