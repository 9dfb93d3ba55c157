// CPU time with the system's share.
#pragma once

namespace kestro {

// User plus system CPU time of the process in seconds.
double cpu_time();

} // namespace kestro
