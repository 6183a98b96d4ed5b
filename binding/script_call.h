// How a script method drives the panel without letting an exception of one
// world unwind through the frames of the other: the panel work runs first and
// returns a value; only once every C++ and toolkit frame is gone does the
// handler raise, either the toolkit's failure or an observer's exception.
#pragma once

#include "binding/exports.h"
#include "binding/jump.h"
#include "panel/panel_api.h"

#include <ruby.h>

namespace velmar {

// Observer exceptions raised during a script method are held for it to re-raise.
void begin_script_call();
// How many script calls are in progress, nested in one another's observers.
long script_call_depth();
// Closes the innermost call; returns the exception to raise, or Qnil. When a
// jump is held, Qnil: the jump goes on instead. A raise while making the
// exception is left in `state`, for the caller to go on with.
VALUE end_script_call(const panel::Outcome &outcome, int &state);
// Closes the innermost call after a C++ exception, which goes on instead.
void abandon_script_call();
// An observer raised: held by the innermost script call, else reported on $stderr
// as an unhandled exception would be, since a user's action has no caller to tell.
void observer_failed(VALUE exception);

// Runs an operation that returns a panel::Outcome; returns the exception to
// raise, or Qnil. A jump held meanwhile goes on from here, once the outcome and
// every toolkit frame of the operation are gone.
template <typename Operation> VALUE attempt(Operation operation) {
  begin_script_call();
  long depth = script_call_depth();
  VALUE exception;
  int state = 0;
  try {
    exception = end_script_call(operation(), state);
  } catch (...) {
    abandon_script_call();
    throw;
  }
  if (state)
    rb_jump_tag(state);
  resume_jump_held_within(depth);
  return exception;
}

inline VALUE raise_or_true(VALUE exception) {
  if (!NIL_P(exception))
    rb_exc_raise(exception);
  return Qtrue;
}

// Fetches the controller, building the panel from the text table on first use;
// ThreadError off the main thread.
void ensure_panel();

} // namespace velmar
