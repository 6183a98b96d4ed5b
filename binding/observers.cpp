#include "binding/observers.h"

#include "binding/convert.h"
#include "binding/cxx_guard.h"
#include "binding/jump.h"
#include "binding/method_table.h"
#include "binding/script_call.h"
#include "panel/events.h"

namespace velmar {

static VALUE options_panel_observers = Qnil;
// Each event's method, looked up once: events come in loops and in every OK.
static ID event_methods[kEventCount];
static ID respond_to_method;

// rb_respond_to looks `respond_to?` up past the method cache at every call.
// Where the observer's class keeps Ruby's own `respond_to?`, a public method
// found through the cache is the same answer; anything else (an own
// `respond_to?`, `respond_to_missing?`, a protected or unimplemented method)
// is asked the full way. Mode 3 counts public methods alone, as `respond_to?`.
static bool responds(VALUE observer, ID method) {
  VALUE klass = CLASS_OF(observer);
  if (rb_method_basic_definition_p(klass, respond_to_method) &&
      rb_method_boundp(klass, method, 3) == 1)
    return true;
  return rb_respond_to(observer, method);
}

// One event on its way through the observers present when it was sent; an
// observer added meanwhile hears only later events.
struct Delivery {
  VALUE observers;
  long count;
  long next;
  ID method;
  VALUE payload;
};

// Resumable: after an observer fails, the next call goes on with the one after
// it, so one protected frame serves the whole list rather than one per observer.
static VALUE deliver_from_next(VALUE argument) {
  auto *delivery = reinterpret_cast<Delivery *>(argument);
  while (delivery->next < delivery->count) {
    VALUE observer = rb_ary_entry(delivery->observers, delivery->next++);
    if (responds(observer, delivery->method))
      rb_funcallv(observer, delivery->method, 1, &delivery->payload);
  }
  return Qnil;
}

// Any jump out of Ruby code (binding/jump.h) stops here, not in our frames.
// A plain exception is handed on and delivery goes on; any other jump is held,
// and nothing more is delivered until it goes on. Returns false when the body
// jumped out.
static bool protect(VALUE (*body)(VALUE), VALUE argument) {
  int state = 0;
  rb_protect(body, argument, &state);
  if (!state)
    return true;
  if (!hold_jump(state)) {
    VALUE error = rb_errinfo();
    rb_set_errinfo(Qnil);
    observer_failed(error);
  }
  return false;
}

void notify_options_window_observer(Event event, VALUE payload) {
  Delivery delivery{options_panel_observers, RARRAY_LEN(options_panel_observers), 0,
                    event_methods[static_cast<size_t>(event)], payload};
  while (!jump_held() && !protect(deliver_from_next, reinterpret_cast<VALUE>(&delivery)))
    ;
  RB_GC_GUARD(payload);
}

static VALUE ruby_value(const EventValue &value) {
  switch (value.kind) {
  case EventValue::Kind::Text:
    return utf8_string(value.text.data(), value.text.size());
  case EventValue::Kind::Integer:
    return INT2NUM(value.integer);
  case EventValue::Kind::Real:
    break;
  }
  return rb_float_new(value.real);
}

struct PanelEvent {
  Event event;
  const EventValues *values;
};

static VALUE panel_payload(const EventValues &values) {
  VALUE payload = rb_ary_new_capa(static_cast<long>(values.size()));
  for (const EventValue &value : values)
    rb_ary_push(payload, ruby_value(value));
  return payload;
}

// Copying the texts may throw; the exception is turned into a Ruby one here,
// inside the protected frame, before it could reach Ruby's frames.
static VALUE deliver_panel_event(VALUE argument) {
  const auto *event = reinterpret_cast<const PanelEvent *>(argument);
  VALUE payload = guard_cxx([&] { return panel_payload(*event->values); });
  notify_options_window_observer(event->event, payload);
  return Qnil;
}

// The panel calls this from inside the toolkit's frames. While a jump is held
// no Ruby code may run, so the event is dropped.
static void panel_event_sink(Event sent, const EventValues &values) {
  if (jump_held())
    return;
  PanelEvent event{sent, &values};
  protect(deliver_panel_event, reinterpret_cast<VALUE>(&event));
}

static VALUE observe(VALUE, VALUE observer) {
  rb_ary_push(options_panel_observers, observer);
  return Qtrue;
}

// Tells the observers; the panel does not show this setting.
static VALUE hide_render_all_assign(VALUE, VALUE value) {
  VALUE payload = rb_ary_new_from_values(1, &value);
  return raise_or_true(attempt([=] {
    notify_options_window_observer(Event::ShowRenderAll, payload);
    return panel::Outcome();
  }));
}

void define_observer_methods(VALUE klass) {
  static const Method methods[] = {
      {"observe", VELMAR_GUARDED(observe), 1},
      {"hide_render_all=", VELMAR_GUARDED(hide_render_all_assign), 1},
  };
  define_methods(klass, methods);
  for (size_t i = 0; i < kEventCount; ++i)
    event_methods[i] = rb_intern(kEventNames[i]);
  respond_to_method = rb_intern("respond_to?");
  rb_global_variable(&options_panel_observers);
  options_panel_observers = rb_ary_new();
  set_event_sink(panel_event_sink);
}

void forget_observers() {
  rb_ary_clear(options_panel_observers);
}

} // namespace velmar
