// The program's body: command line in, exit status out.
#pragma once

namespace kestro {

// Does what the command line asks for, mining on jobs threads, and returns the
// program's exit status.  0: done, or usage shown.  1: a fatal error, reported
// on standard error, or a command line that getopt refused.  A failed internal
// check aborts the process after its report, so only a program's main() should
// call.
int run_command(int argc, char **argv, int jobs);

} // namespace kestro
