#include "binding/script_call.h"

namespace velmar {

VALUE _options_panel_show(VALUE) {
  ensure_panel();
  return raise_or_true(attempt([] { return panel::show(); }));
}

VALUE _options_panel_close(VALUE) {
  ensure_panel();
  return raise_or_true(attempt([] { return panel::close(); }));
}

} // namespace velmar
