// The allocators of the C library and of C++, each in front of the real one.
//
// Standing in the program they take the place of the libraries' own for every
// caller, so a stream's buffer or an exception can be refused like a block of
// ours.  The real one is the C library's, or the sanitizer's under one.  No
// sanitizer watches this file (tests/CMakeLists.txt): it runs before they do.

#include "support/failing_memory.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <new>

// The names are the libraries' own.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
#ifdef KESTRO_SANITIZED
#define REAL(name) __interceptor_##name
#else
#define REAL(name) __libc_##name
#endif
extern "C" {
void *REAL(malloc)(size_t size);
void *REAL(calloc)(size_t count, size_t size);
void *REAL(realloc)(void *address, size_t size);
void *REAL(memalign)(size_t alignment, size_t size);
void REAL(free)(void *address);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace kestro {

static std::atomic<long> asked = 0; // allocations
static std::atomic<long> first = 0; // the one to refuse; 0: none
static std::atomic<bool> lasting = false;
static std::atomic<long> live = 0;
static thread_local bool exempt = false; // from counting and refusing

void refuse_allocation(long n, refusal how) {
  asked = 0;
  lasting = how == refusal::lasting;
  first = n;
}

long refuse_no_allocation() {
  first = 0;
  return asked;
}

long live_blocks() { return live; }

// Whether the next allocation is one to refuse.
static bool refused() {
  if (exempt)
    return false;
  const long n = ++asked;
  const long at = first;
  if (at == 0 || n < at || (n > at && !lasting))
    return false;
  errno = ENOMEM;
  return true;
}

static void *counted(void *address) {
  if (address)
    live++;
  return address;
}

static void *allocate_aligned(size_t alignment, size_t size) {
  return refused() ? nullptr : counted(REAL(memalign)(alignment, size));
}

static void release(void *address) {
  if (address)
    live--;
  REAL(free)(address);
}

} // namespace kestro

using kestro::counted;
using kestro::refused;

extern "C" {

void *malloc(size_t size) {
  return refused() ? nullptr : counted(REAL(malloc)(size));
}

void *calloc(size_t count, size_t size) {
  return refused() ? nullptr : counted(REAL(calloc)(count, size));
}

void *realloc(void *address, size_t size) {
  if (!address)
    return malloc(size);
  if (size == 0) {
    kestro::release(address);
    return nullptr;
  }
  return refused() ? nullptr : REAL(realloc)(address, size);
}

void *memalign(size_t alignment, size_t size) {
  return kestro::allocate_aligned(alignment, size);
}

void *aligned_alloc(size_t alignment, size_t size) {
  return kestro::allocate_aligned(alignment, size);
}

int posix_memalign(void **address, size_t alignment, size_t size) {
  *address = kestro::allocate_aligned(alignment, size);
  return *address ? 0 : ENOMEM;
}

void free(void *address) { kestro::release(address); }
}

#ifdef KESTRO_SANITIZED
// The sanitizers ask where a new thread's stack is and stop without an answer,
// for which the C library needs a block.
extern "C" int pthread_getattr_np(pthread_t thread,
                                  pthread_attr_t *attributes) noexcept {
  kestro::exempt = true;
  const auto real = reinterpret_cast<decltype(&pthread_getattr_np)>(
      dlsym(RTLD_NEXT, "pthread_getattr_np"));
  const int status = real(thread, attributes);
  kestro::exempt = false;
  return status;
}
#endif

static void *or_throw(void *address) {
  return address ? address : throw std::bad_alloc();
}

static size_t alignment_of(std::align_val_t a) {
  return static_cast<size_t>(a);
}

// All forms, since a sanitizer has its own of each.
// clang-format off
using std::align_val_t, std::nothrow_t;
void *operator new(size_t n) { return or_throw(malloc(n)); }
void *operator new[](size_t n) { return or_throw(malloc(n)); }
void *operator new(size_t n, const nothrow_t &) noexcept { return malloc(n); }
void *operator new[](size_t n, const nothrow_t &) noexcept { return malloc(n); }
void *operator new(size_t n, align_val_t a) { return or_throw(memalign(alignment_of(a), n)); }
void *operator new[](size_t n, align_val_t a) { return or_throw(memalign(alignment_of(a), n)); }
void *operator new(size_t n, align_val_t a, const nothrow_t &) noexcept { return memalign(alignment_of(a), n); }
void *operator new[](size_t n, align_val_t a, const nothrow_t &) noexcept { return memalign(alignment_of(a), n); }
void operator delete(void *p) noexcept { free(p); }
void operator delete[](void *p) noexcept { free(p); }
void operator delete(void *p, size_t) noexcept { free(p); }
void operator delete[](void *p, size_t) noexcept { free(p); }
void operator delete(void *p, const nothrow_t &) noexcept { free(p); }
void operator delete[](void *p, const nothrow_t &) noexcept { free(p); }
void operator delete(void *p, align_val_t) noexcept { free(p); }
void operator delete[](void *p, align_val_t) noexcept { free(p); }
void operator delete(void *p, size_t, align_val_t) noexcept { free(p); }
void operator delete[](void *p, size_t, align_val_t) noexcept { free(p); }
// clang-format on
