#include "binding/convert.h"
#include "binding/script_call.h"

namespace velmar {

VALUE _populate_presets(VALUE, VALUE joined_names) {
  ensure_panel();
  VALUE names = string_argument(joined_names, "names");
  return raise_or_true(attempt([=] { return panel::populate_presets(utf8_text(names)); }));
}

VALUE _preset(VALUE, VALUE name) {
  ensure_panel();
  VALUE text = string_argument(name, "name");
  return raise_or_true(attempt([=] { return panel::select_preset(utf8_text(text)); }));
}

} // namespace velmar
