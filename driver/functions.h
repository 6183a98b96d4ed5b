// The driver's functions, one group per room, each defined beside its
// handlers; driver.mm registers them all from its one table.
#pragma once

#import "driver/step.h"

namespace driver {

extern const FunctionGroup kStep;          // step.mm: how a step treats observers' errors
extern const FunctionGroup kActing;        // acting.mm: clicks, picks, typing, tabs
extern const FunctionGroup kReading;       // reading.mm: what the user sees of each control
extern const FunctionGroup kFolderChooser; // folder_chooser.mm: answering the modal chooser
extern const FunctionGroup kHost;          // host.mm: what a host and its application do
extern const FunctionGroup kDiagnostics;   // diagnostics.mm: the window and the process

} // namespace driver
