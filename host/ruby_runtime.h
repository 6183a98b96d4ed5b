// The embedded Ruby interpreter, started and stopped the way a host does it.
#pragma once

#include "host/command_line.h"

#include <string>

namespace host {

// Call after RUBY_INIT_STACK in main. The build folder is where OptionsPanel.so lives.
void start_ruby(const Options &options, const std::string &build_folder);

// Loads the plugin script named in the options; -1 when it ran to its end,
// else the status to exit with: the one it gave `exit`, or 1 after its error
// has been printed with the backtrace.
int load_plugin();

// Gives Ruby's other threads and its signal handlers (Ctrl-C) a turn between
// toolkit waits; -1 to go on, else the exit status to stop with.
int ruby_turn();

// Runs at_exit handlers and finalisers; returns the process's exit status.
int stop_ruby(int status);

} // namespace host
