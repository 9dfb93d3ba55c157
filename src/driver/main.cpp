// The program kestro.
//
// It mines on one thread: its body and what its exit status means are in
// driver/command.h.

#include "driver/command.h"

int main(int argc, char **argv) { return kestro::run_command(argc, argv, 1); }
