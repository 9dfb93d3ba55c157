// Thread-specific values, which say by a status what a thread_local variable
// with a destructor can only abort for.  The first 32 keys of a process cost no
// memory.

#include "base/thread_state.h"

#include "base/xmalloc.h"

namespace kestro {

pthread_key_t thread_key_create(void (*end)(void *)) {
  pthread_key_t key;
  if (pthread_key_create(&key, end))
    die_out_of_memory();
  return key;
}

void thread_key_set(pthread_key_t key, void *value) {
  if (pthread_setspecific(key, value))
    die_out_of_memory();
}

} // namespace kestro
