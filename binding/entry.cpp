#include "binding/exports.h"
#include "binding/first_copy.h"
#include "binding/method_table.h"

namespace velmar {

// Defines Velmar::OptionsPanelWindow with its methods, the text table and the
// observer list. Builds no panel. Not exported, so its address is this copy's.
static void define_options_panel_window() {
  VALUE module = rb_define_module("Velmar");
  VALUE klass = rb_define_class_under(module, "OptionsPanelWindow", rb_cObject);
  if (!claim_first_copy(klass, reinterpret_cast<const void *>(&define_options_panel_window)))
    return;
  define_panel_methods(klass);
  define_text_methods(klass);
  define_observer_methods(klass);
  define_preset_methods(klass);
  define_image_methods(klass);
  define_environment_methods(klass);
}

} // namespace velmar

void Init_OptionsPanel() {
  velmar::define_options_panel_window();
}
