// What a shared library of kestro shows.
#pragma once

#if defined(__GNUC__)
#define KESTRO_API __attribute__((visibility("default")))
#else
#define KESTRO_API
#endif
