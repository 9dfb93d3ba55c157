// CPU time.
#pragma once

namespace kestro {

// User CPU time of the process in seconds.
double user_cpu_time();

} // namespace kestro
