// CPU time, from the system's account of the process.

#include "base/cpu_time.h"

#include <sys/resource.h>

namespace kestro {

double user_cpu_time() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec) * 1e-6;
}

} // namespace kestro
