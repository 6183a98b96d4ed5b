#include "host/command_line.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace host {

const char kUsage[] =
    "usage: velmar-host [--timeout SECONDS] [-I DIR]... SCRIPT [-- ARGUMENT...]\n"
    "\n"
    "Runs the Ruby plugin SCRIPT as a host application would: with the folder of\n"
    "velmar-host (where OptionsPanel.so is built) on the load path and the\n"
    "ARGUMENTs as ARGV, then handles the panel's events until it has closed.\n"
    "\n"
    "  --timeout SECONDS  stop waiting for the panel after SECONDS (exit status 3)\n"
    "  -I DIR             put DIR on the load path, before the build folder\n"

    "  -h, --help         show this text\n"
    "\n"
    "Exit status: 0 once the panel has closed (or was never shown), 1 when the\n"
    "script raised, 2 for a usage error, 3 when the time limit passed; a script\n"
    "that calls exit chooses its own.\n";

static std::optional<double> parse_seconds(const char *text) {
  char *end = nullptr;
  errno = 0;
  double seconds = std::strtod(text, &end);
  if (errno != 0 || end == text || *end != '\0' || !std::isfinite(seconds) || seconds <= 0)
    return std::nullopt;
  return seconds;
}

// The value of an option that takes one, or nullptr when it is missing.
static const char *option_value(int argc, char **argv, int &i) {
  return i + 1 < argc ? argv[++i] : nullptr;
}

static bool parse_option(int argc, char **argv, int &i, Options &options, std::string &error) {
  std::string option = argv[i];
  if (option == "-h" || option == "--help") {
    options.help = true;
    return true;
  }
  const char *value = option_value(argc, argv, i);
  if (!value) {
    error = option + " needs a value";
    return false;
  }
  if (option == "-I") {
    options.load_paths.push_back(value);
    return true;
  }
  if (option == "--timeout") {
    options.timeout_seconds = parse_seconds(value);
    if (!options.timeout_seconds)
      error = std::string("--timeout needs a positive number of seconds, not ") + value;
    return options.timeout_seconds.has_value();
  }
  error = "unknown option " + option;
  return false;
}

std::optional<Options> parse_command_line(int argc, char **argv, std::string &error) {
  Options options;
  int i = 1;
  for (; i < argc && argv[i][0] == '-' && argv[i][1] != '\0'; ++i)
    if (!parse_option(argc, argv, i, options, error))
      return std::nullopt;
  if (options.help)
    return options;
  if (i >= argc) {
    error = "no plugin script given";
    return std::nullopt;
  }
  options.script = argv[i++];
  // Everything after the script is the script's own; a "--" there only marks where it starts.
  if (i < argc && std::strcmp(argv[i], "--") == 0)
    ++i;
  options.script_arguments.assign(argv + i, argv + argc);
  return options;
}

} // namespace host
