// CPU time with the system's share.

#include "reference/base/cpu_time.h"

#include <sys/resource.h>

namespace kestro {

double cpu_time() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) *
             1e-6;
}

} // namespace kestro
