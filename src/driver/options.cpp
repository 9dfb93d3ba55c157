// Command line and run settings.
//
// Numbers are taken as strtol and strtod read them, without validation.  The
// two size limits push each other when they cross, at the moment each option is
// seen, so their order matters.

#include "driver/options.h"

#include <getopt.h>
#include <locale.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "base/basename.h"

namespace kestro {

namespace {

// Values of the long options that have no short form.
enum long_only { load_labels = 256, save_labels, candidates, stabilizer };

} // namespace

// clang-format off
static const option long_options[] = {
    {"help",                 no_argument,       nullptr, 'h'},
    {"maxsize",              required_argument, nullptr, 'M'},
    {"minsize",              required_argument, nullptr, 'm'},
    {"parent-children-list", no_argument,       nullptr, 'p'},
    {"support",              required_argument, nullptr, 's'},
    {"tid-list",             no_argument,       nullptr, 't'},
    {"maximal",              no_argument,       nullptr, 'x'},
    {"candidates",           no_argument,       nullptr, candidates},
    {"load-labels",          optional_argument, nullptr, load_labels},
    {"save-labels",          optional_argument, nullptr, save_labels},
    {"stabilizer-threshold", required_argument, nullptr, stabilizer},
    {nullptr,                0,                 nullptr, 0},
};

static const char usage_text[] =
    "Discover frequent subgraphs.\n"
    "\n"
    "  -h, --help                   show this message\n"
    "  -M, --maxsize=NUMBER         stop after generating size NUMBER subgraphs\n"
    "  -m, --minsize=NUMBER         start from generating size NUMBER subgraphs\n"
    "  -p, --parent-children-list   generate PC list\n"
    "  -s, --support=NUMBER         use NUMBER as the minimum support percentile\n"
    "  -t, --tid-list               generate TID list\n"
    "  -x, --maximal                generate only maximal frequent subgraphs\n"
    "                               (-p is automatically turned on)\n";
// clang-format on

void usage(const char *program, FILE *out) {
  fprintf(out, "Usage: %s [OPTION] FILE\n", basename(program));
  fputs(usage_text, out);
}

static int int_argument() {
  return static_cast<int>(strtol(optarg, nullptr, 10));
}

// The decimal point is a point, whatever locale the process has set.
static double number_argument() {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  if (!plain)
    die_out_of_memory();
  return strtod_l(optarg, nullptr, plain);
}

// Takes one option; false for one that ends the parsing with help.
static bool apply_option(int c, options *o) {
  switch (c) {
  case 'h':
    return false;
  case 'M':
    o->maxsize = int_argument();
    o->minsize = std::min(o->minsize, o->maxsize);
    break;
  case 'm':
    o->minsize = int_argument();
    o->maxsize = std::max(o->maxsize, o->minsize);
    break;
  case 'p':
    o->parent_children_list = 1;
    break;
  case 's':
    o->support = number_argument();
    break;
  case 't':
    o->tid_list = 1;
    break;
  case 'x':
    o->maximal = 1;
    o->parent_children_list = 1;
    break;
  case candidates:
    o->candidates = 1;
    break;
  case load_labels:
    o->load_labels = 1;
    o->load_labels_file = optarg;
    break;
  case save_labels:
    o->save_labels = 1;
    o->save_labels_file = optarg;
    break;
  case stabilizer:
    o->stabilizer_threshold = int_argument();
    break;
  default:
    break;
  }
  return true;
}

command parse_command_line(int argc, char **argv, options *o) {
  optind = 0; // also resets what getopt remembers of an earlier command line
  bool named = false; // whether FILE has come
  // The "-" has other words delivered in their place, as the argument of 1.
  // Without it the environment could end the options at the first of them.
  int c;
  while ((c = getopt_long(argc, argv, "-hM:m:ps:tx", long_options, nullptr)) !=
         -1) {
    if (c == '?')
      return command::refuse;
    if (c != 1) {
      if (!apply_option(c, o))
        return command::show_usage;
    } else if (!named) {
      o->input_file = optarg;
      named = true;
    }
  }
  if (!named && optind < argc) { // behind "--"
    o->input_file = argv[optind];
    named = true;
  }
  return named ? command::run : command::show_usage;
}

xptr<char> make_output_name(const char *file, const char *suffix) {
  const size_t length = strlen(file);
  xptr<char> name(static_cast<char *>(xcalloc(length + strlen(suffix) + 1, 1)));
  memcpy(name.get(), file, length);
  size_t i = length;
  while (i > 1 && file[i - 1] != '.')
    i--;
  const size_t end = i > 1 ? i - 1 : length; // where the extension starts
  memcpy(name.get() + end, suffix, strlen(suffix) + 1);
  return name;
}

} // namespace kestro
