// Lets allocations of absurd size return null under a sanitizer, as they do
// without one: what becomes of a refused allocation is under test.

// The names are the sanitizers' own.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" const char *__asan_default_options();
extern "C" const char *__tsan_default_options();

extern "C" const char *__asan_default_options() {
  return "allocator_may_return_null=1";
}

extern "C" const char *__tsan_default_options() {
  return "allocator_may_return_null=1";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
