// How everything of kestro fails.
#pragma once

#include <exception>
#include <memory>
#include <string>

#include <kestro/export.h>

namespace kestro {

// Bad input, a file that can't be read or written, an argument that makes no
// sense, memory that has run out.  what() is the text that the program would
// print, without the newline behind it; it may quote whole lines of input.
class KESTRO_API error : public std::exception {
public:
  // The text, and where it happened: a file's path, empty for none, and the
  // number of the line in it from 1 on, 0 for none.
  explicit error(std::string text, std::string path = {}, long long line = 0);
  const char *what() const noexcept override;
  const std::string &path() const noexcept;
  long long line() const noexcept { return line_; }

protected:
  error() noexcept = default; // of memory that has run out: allocates nothing

private:
  using shared_text = std::shared_ptr<const std::string>;
  friend void set_error_place(error *e, const shared_text &path,
                              long long line) noexcept;

  shared_text text_; // shared: copying must not throw
  shared_text path_; // null for none
  long long line_ = 0;
};

} // namespace kestro
