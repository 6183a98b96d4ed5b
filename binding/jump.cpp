#include "binding/jump.h"

#include "binding/script_call.h"

namespace velmar {

// At most one jump is held: once one is, no observer is called until it goes on.
static int held_state = 0;
// The exception, or the record that rb_errinfo() held when the jump stopped.
static VALUE held_value = Qnil;
// How many script calls were in progress when it stopped.
static long held_depth = 0;

// Exit and signals must reach the interpreter's top, not an observer's report.
static bool asks_to_leave(VALUE exception) {
  return RTEST(rb_obj_is_kind_of(exception, rb_eSystemExit)) ||
         RTEST(rb_obj_is_kind_of(exception, rb_eSignal));
}

bool hold_jump(int state) {
  VALUE exception = exception_of_jump();
  if (!NIL_P(exception) && !asks_to_leave(exception))
    return false;
  if (NIL_P(held_value))
    rb_global_variable(&held_value);
  held_state = state;
  held_value = NIL_P(exception) ? rb_errinfo() : exception;
  held_depth = script_call_depth();
  if (!NIL_P(exception))
    rb_set_errinfo(Qnil);
  return true;
}

bool jump_held() {
  return held_state != 0;
}

// Lets go of the held jump; returns its state, its value in `value`.
static int release(VALUE &value) {
  int state = held_state;
  value = held_value;
  held_state = 0;
  held_value = Qnil;
  return state;
}

// Lets go of the held jump and goes on with it: an exit or signal is raised
// again; a throw or break goes on only where it may (`may_resume`) and while
// its record is still Ruby's own, else it is reported once.
static void go_on_with_held_jump(bool may_resume) {
  if (!jump_held())
    return;
  VALUE value;
  int state = release(value);
  if (!NIL_P(exception_of(value)))
    rb_exc_raise(value);
  if (may_resume && value == rb_errinfo())
    rb_jump_tag(state);
  observer_failed(rb_exc_new_cstr(
      rb_eRuntimeError, "an observer jumped out of its event; the jump stops at the panel"));
}

void resume_held_jump() {
  go_on_with_held_jump(true);
}

void resume_jump_held_within(long depth) {
  if (held_depth >= depth)
    resume_held_jump();
}

void settle_stale_jump() {
  go_on_with_held_jump(false);
}

} // namespace velmar

void OptionsPanel_resume_held_jump() {
  velmar::resume_held_jump();
}
