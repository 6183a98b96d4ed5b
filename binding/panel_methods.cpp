#include "binding/method_table.h"
#include "binding/script_call.h"

namespace velmar {

static VALUE show(VALUE) {
  ensure_panel();
  return raise_or_true(attempt([] { return panel::show(); }));
}

static VALUE close(VALUE) {
  ensure_panel();
  return raise_or_true(attempt([] { return panel::close(); }));
}

void define_panel_methods(VALUE klass) {
  static const Method methods[] = {
      {"show", VELMAR_GUARDED(show), 0},
      {"close", VELMAR_GUARDED(close), 0},
  };
  define_methods(klass, methods);
}

} // namespace velmar
