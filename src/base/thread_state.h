// What a module keeps for each thread.
#pragma once

#include <pthread.h>

#include <new>
#include <type_traits>

namespace kestro {

// A key whose values end is called with when their threads end.  Dies with "not
// enough memory" when there are too many.
pthread_key_t thread_key_create(void (*end)(void *));
// Lets the end of this thread call the key's end with value.  Dies likewise.
void thread_key_set(pthread_key_t key, void *value);

// A T per thread, made at its first use and ended with the thread; that of the
// main thread lasts until the process ends.  One static thread_local variable
// of this type per T.  A thread_local T would do the same, except that the C
// library aborts the process when it has no memory to note T's destructor; here
// the first use dies instead.
template <class T> class thread_state {
public:
  T *operator->() {
    if (!made_)
      make();
    return here();
  }
  T &operator*() { return *operator->(); }

private:
  static_assert(std::is_nothrow_default_constructible_v<T>);
  T *here() { return std::launder(reinterpret_cast<T *>(bytes_)); }

  void make() {
    static const pthread_key_t key = thread_key_create(end);
    thread_key_set(key, this);
    new (bytes_) T();
    made_ = true;
  }

  static void end(void *value) {
    auto *state = static_cast<thread_state *>(value);
    state->here()->~T(); // which may still use the state
    state->made_ = false;
  }

  alignas(T) unsigned char bytes_[sizeof(T)] = {};
  bool made_ = false;
};

} // namespace kestro
