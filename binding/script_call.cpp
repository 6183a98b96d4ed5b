#include "binding/script_call.h"

#include "binding/report.h"
#include "binding/text_table.h"
#include "platform/threads.h"

namespace velmar {

// One slot per script method in progress, innermost last; each holds the
// first observer exception of its call, or nil.
static VALUE held_exceptions = Qnil;

static VALUE held_list() {
  if (NIL_P(held_exceptions)) {
    rb_global_variable(&held_exceptions);
    held_exceptions = rb_ary_new();
  }
  return held_exceptions;
}

void begin_script_call() {
  settle_stale_jump();
  rb_ary_push(held_list(), Qnil);
}

long script_call_depth() {
  return RARRAY_LEN(held_list());
}

static VALUE toolkit_error(const panel::ToolkitFailure &failure) {
  std::string message = failure.name + ": " + failure.reason;
  return rb_exc_new(rb_eRuntimeError, message.data(), static_cast<long>(message.size()));
}

// Closes the innermost call; returns its held exception, or Qnil when a jump
// is held: a jump that goes on takes the place of an earlier exception, as a
// throw from an ensure clause does in Ruby.
static VALUE close_call() {
  VALUE held = rb_ary_pop(held_list());
  return jump_held() ? Qnil : held;
}

VALUE end_script_call(const panel::Outcome &outcome) {
  VALUE held = close_call();
  // Reporting would run Ruby code, which may overwrite a held throw's record.
  if (jump_held() || !outcome.failed)
    return held;
  if (!NIL_P(held))
    observer_failed(held);
  return toolkit_error(outcome.failure);
}

void abandon_script_call() {
  rb_ary_pop(held_list());
}

void observer_failed(VALUE exception) {
  VALUE list = held_list();
  long depth = RARRAY_LEN(list);
  if (depth > 0 && NIL_P(rb_ary_entry(list, depth - 1))) {
    rb_ary_store(list, depth - 1, exception);
    return;
  }
  report_exception(exception);
}

void ensure_panel() {
  // The toolkit is not thread-safe: a call from elsewhere must change nothing.
  if (!OnMainThread())
    rb_raise(rb_eThreadError, "must be called on the main thread");
  if (panel::is_built())
    return;
  VALUE values = panel_text_values();
  VALUE exception = attempt([=] { return panel::fetch(panel_texts(values)); });
  RB_GC_GUARD(values);
  raise_or_true(exception);
}

} // namespace velmar

VALUE OptionsPanel_hold_observer_errors(void (*action)(void *), void *context) {
  velmar::begin_script_call();
  try {
    action(context);
  } catch (...) {
    velmar::abandon_script_call();
    throw;
  }
  return velmar::close_call();
}
