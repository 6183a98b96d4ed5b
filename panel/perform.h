// How each panel:: function works on the controller: inside its own
// autorelease pool, with any toolkit exception stopped here and handed back as
// an Outcome, so that nothing but a return value crosses back into the
// binding's frames.
#pragma once

#import "panel/OptionsPanel.h"
#import "panel/controls.h"

namespace velmar {
namespace panel {

// The one controller once built: the panel is never torn down. Read on every
// script call, so a variable rather than a message to the class.
extern OptionsPanel *built_controller;

inline Class PoolClass() {
  static Class pool = [NSAutoreleasePool class];
  return pool;
}

// A C++ exception (no memory) goes on to the binding's guard, past a drained pool.
template <typename Operation> Outcome Perform(Operation operation) {
  Outcome outcome;
  NSAutoreleasePool *pool = [PoolClass() new];
  try {
    @try {
      operation(built_controller);
    } @catch (NSException *exception) {
      outcome.failed = true;
      outcome.failure =
          ToolkitFailure{Utf8FromNSString([exception name]), Utf8FromNSString([exception reason])};
    }
  } catch (...) {
    [pool drain];
    throw;
  }
  [pool drain];
  return outcome;
}

// For the calls that start the toolkit or put windows on and off screen: there
// GNUstep installs its own signal handlers and looks up the images it draws.
template <typename Operation> Outcome PerformWindowing(Operation operation) {
  HostSignalsGuard hostSignals;
  ShortImageSearch imageSearch;
  return Perform(operation);
}

} // namespace panel
} // namespace velmar
