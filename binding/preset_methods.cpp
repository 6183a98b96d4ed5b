#include "binding/convert.h"
#include "binding/method_table.h"
#include "binding/script_call.h"

namespace velmar {

static VALUE populate_presets(VALUE, VALUE joined_names) {
  ensure_panel();
  VALUE names = string_argument(joined_names, "names");
  return raise_or_true(attempt([=] { return panel::populate_presets(utf8_text(names)); }));
}

static VALUE preset_assign(VALUE, VALUE name) {
  ensure_panel();
  VALUE text = string_argument(name, "name");
  return raise_or_true(attempt([=] { return panel::select_preset(utf8_text(text)); }));
}

void define_preset_methods(VALUE klass) {
  static const Method methods[] = {
      {"preset=", VELMAR_GUARDED(preset_assign), 1},
      {"populate_presets", VELMAR_GUARDED(populate_presets), 1},
  };
  define_methods(klass, methods);
}

} // namespace velmar
