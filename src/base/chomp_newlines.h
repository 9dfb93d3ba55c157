// Cutting a text at its first newline.
#pragma once

namespace kestro {

// Replaces every newline of text by a terminating zero; returns text, which so
// ends at its first newline.
char *chomp_newlines(char *text);

} // namespace kestro
