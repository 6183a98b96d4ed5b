// The host's side of the toolkit: its application object and its event loop.
#pragma once

#include <optional>
#include <string>

namespace host {

// Makes the application object, before any plugin runs, as a host has done;
// false, with the reason printed, when the toolkit can't start (no display).
bool create_application();

// The folder that holds this program, which is also where the extension is built.
std::string program_folder();

// Handles the toolkit's events until no panel is on screen; returns 0 then, 3
// when the time limit passes first, or the status Ruby asks to stop with (see
// ruby_turn).
int run_event_loop(std::optional<double> timeout_seconds);

} // namespace host
