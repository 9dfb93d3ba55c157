// Cutting a text in place.

#include "base/chomp_newlines.h"

#include <cstring>

namespace kestro {

char *chomp_newlines(char *text) {
  for (char *newline = text; (newline = strchr(newline, '\n'));)
    *newline++ = '\0';
  return text;
}

} // namespace kestro
