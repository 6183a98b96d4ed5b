#include "binding/script_call.h"

#include "binding/report.h"
#include "binding/text_table.h"
#include "platform/threads.h"

#include <vector>

namespace velmar {

// One slot per script method in progress, innermost last; each holds the
// first observer exception of its call, or nil. A plain vector, since every
// event and setter opens and closes one; the collector sees its exceptions
// through the one object that marks them.
static std::vector<VALUE> held_exceptions;
static VALUE held_marker = Qnil;

static void mark_held(void *held) {
  for (VALUE exception : *static_cast<std::vector<VALUE> *>(held))
    rb_gc_mark(exception);
}

// Filled in by name: the fields after the mark function differ between Rubies.
static const rb_data_type_t *held_marker_type() {
  static rb_data_type_t type = [] {
    rb_data_type_t filled = {};
    filled.wrap_struct_name = "OptionsPanel held exceptions";
    filled.function.dmark = mark_held;
    return filled;
  }();
  return &type;
}

static std::vector<VALUE> &held_list() {
  if (NIL_P(held_marker)) {
    rb_global_variable(&held_marker);
    // The collector marks a wrapped object only if it wraps something.
    held_marker = TypedData_Wrap_Struct(rb_cObject, held_marker_type(), &held_exceptions);
  }
  return held_exceptions;
}

void begin_script_call() {
  settle_stale_jump();
  held_list().push_back(Qnil);
}

long script_call_depth() {
  return static_cast<long>(held_exceptions.size());
}

static VALUE new_toolkit_error(VALUE argument) {
  const auto *failure = reinterpret_cast<const panel::ToolkitFailure *>(argument);
  VALUE message = rb_str_new(failure->name.data(), static_cast<long>(failure->name.size()));
  rb_str_cat_cstr(message, ": ");
  rb_str_cat(message, failure->reason.data(), static_cast<long>(failure->reason.size()));
  return rb_exc_new_str(rb_eRuntimeError, message);
}

// "name: reason". Made under rb_protect, since the failure is still alive:
// a raise (Ruby out of memory) is left in `state` for the caller.
static VALUE toolkit_error(const panel::ToolkitFailure &failure, int &state) {
  return rb_protect(new_toolkit_error, reinterpret_cast<VALUE>(&failure), &state);
}

// Closes the innermost call; returns its held exception, or Qnil when a jump
// is held: a jump that goes on takes the place of an earlier exception, as a
// throw from an ensure clause does in Ruby.
static VALUE close_call() {
  VALUE held = held_exceptions.back();
  held_exceptions.pop_back();
  return jump_held() ? Qnil : held;
}

VALUE end_script_call(const panel::Outcome &outcome, int &state) {
  VALUE held = close_call();
  // Reporting would run Ruby code, which may overwrite a held throw's record.
  if (jump_held() || !outcome.failed)
    return held;
  if (!NIL_P(held))
    observer_failed(held);
  return toolkit_error(outcome.failure, state);
}

void abandon_script_call() {
  held_exceptions.pop_back();
}

void observer_failed(VALUE exception) {
  if (!held_exceptions.empty() && NIL_P(held_exceptions.back())) {
    held_exceptions.back() = exception;
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
