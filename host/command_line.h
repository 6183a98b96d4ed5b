// What velmar-host is asked to do, read from its command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

struct Options {
  std::string script;
  std::vector<std::string> load_paths;       // -I DIR, searched before the build folder
  std::vector<std::string> script_arguments; // what the script sees as ARGV
  std::optional<double> timeout_seconds;     // none: wait until the panel has closed
  bool help = false;
};

// The options, or nullopt with the reason in `error`.
std::optional<Options> parse_command_line(int argc, char **argv, std::string &error);

extern const char kUsage[];

} // namespace host
