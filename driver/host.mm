// What a host and its application do around a plugin, for tests of how the
// panel lives inside one.
#import "driver/functions.h"

#import "platform/platform.h"

namespace driver {

static VALUE process_events(VALUE) {
  return Drive([] {
    [Controller() processEvents];
    return (id)nil;
  });
}

// What a host has done before any plugin runs: the application object exists,
// the panel does not.
static VALUE start_application(VALUE) {
  return Drive([] {
    HostSignalsGuard hostSignals;
    EnsureApplicationObject();
    return (id)nil;
  });
}

// What AppKit does to a panel that hides on deactivation when its application
// goes to the background: off screen, but not closed.
static VALUE hide_as_inactive(VALUE) {
  return Drive([] {
    [PanelWindow() orderOut:nil];
    return (id)nil;
  });
}

// What terminate: does first, without ending the process: the application's
// observers hear that it is terminating.
static VALUE announce_termination(VALUE) {
  return Drive([] {
    [[NSNotificationCenter defaultCenter]
        postNotificationName:NSApplicationWillTerminateNotification
                      object:NSApp];
    return (id)nil;
  });
}

// For a plugin's tests: every observer forgotten, the panel closed unheard and
// every control as a new panel has it, so that one test cannot leak into the next.
static VALUE reset(VALUE) {
  auto resetPanel = OPTIONS_PANEL_FIND(OptionsPanel_reset);
  if (!resetPanel)
    rb_raise(rb_eRuntimeError, "the options panel extension is not loaded");
  resetPanel();
  return Qtrue;
}

static const Function kHostFunctions[] = {
    {"process_events", DRIVER_FUNCTION(process_events), 0},
    {"start_application", DRIVER_FUNCTION(start_application), 0},
    {"hide_as_inactive", DRIVER_FUNCTION(hide_as_inactive), 0},
    {"announce_termination", DRIVER_FUNCTION(announce_termination), 0},
    {"reset", DRIVER_FUNCTION(reset), 0},
};
const FunctionGroup kHost = Group(kHostFunctions);

} // namespace driver
