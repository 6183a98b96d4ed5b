// velmar-host: runs one Ruby plugin the way a host application runs its
// plugins, for trying plugins and the options panel outside a real host.
#include "host/command_line.h"
#include "host/ruby_runtime.h"
#include "host/toolkit.h"

#include <ruby.h>

#include <cstdio>

int main(int argc, char **argv) {
  ruby_sysinit(&argc, &argv);
  RUBY_INIT_STACK;

  std::string error;
  std::optional<host::Options> options = host::parse_command_line(argc, argv, error);
  if (!options || options->help) {
    if (!options)
      std::fprintf(stderr, "velmar-host: %s\n\n", error.c_str());
    std::fputs(host::kUsage, options ? stdout : stderr);
    return options ? 0 : 2;
  }

  if (!host::create_application())
    return 1;
  host::start_ruby(*options, host::program_folder());
  int status = host::load_plugin();
  if (status < 0)
    status = host::run_event_loop(options->timeout_seconds);
  return host::stop_ruby(status);
}
