#include "binding/method_table.h"

#include "binding/cxx_guard.h"
#include "binding/handlers.h"
#include "binding/observers.h"
#include "binding/text_table.h"

namespace velmar {

// Every handler is guarded: a C++ exception becomes a Ruby one on the way out.
// The function itself, not the macro that newer Rubies put in its place for C++.
static void define(VALUE klass, const char *name, VALUE (*handler)(ANYARGS), int arity) {
  (rb_define_method)(klass, name, handler, arity);
}

void _options_panel_define() {
  VALUE module = rb_define_module("Velmar");
  VALUE klass = rb_define_class_under(module, "OptionsPanelWindow", rb_cObject);

  define(klass, "show", VELMAR_GUARDED(_options_panel_show), 0);
  define(klass, "close", VELMAR_GUARDED(_options_panel_close), 0);
  define(klass, "text=", VELMAR_GUARDED(_options_panel_title_assign), 1);
  define(klass, "preset=", VELMAR_GUARDED(_preset), 1);
  define(klass, "populate_presets", VELMAR_GUARDED(_populate_presets), 1);
  define(klass, "set_output_dimensions", VELMAR_GUARDED(_set_output_dimensions), 5);
  define(klass, "output_format=", VELMAR_GUARDED(_output_format), 1);
  define(klass, "set_environment_spherical_point_lights",
         VELMAR_GUARDED(_set_environment_spherical_point_lights), 1);
  define(klass, "set_environment_background", VELMAR_GUARDED(_set_environment_background), 1);
  define(klass, "set_environment_information_bar", VELMAR_GUARDED(_set_environment_information_bar),
         1);
  define(klass, "set_environment_clay", VELMAR_GUARDED(_set_environment_clay), 1);
  define(klass, "set_environment_caching", VELMAR_GUARDED(_set_environment_caching), 1);
  define(klass, "set_environment_caustic", VELMAR_GUARDED(_set_environment_caustic), 1);
  define(klass, "set_environment_brightness", VELMAR_GUARDED(_set_environment_brightness), 1);
  define(klass, "set_environment_contrast", VELMAR_GUARDED(_set_environment_contrast), 1);
  define(klass, "set_environment_translucent_color",
         VELMAR_GUARDED(_set_environment_translucent_color), 1);
  define(klass, "set_environment_automatic_materials",
         VELMAR_GUARDED(_set_environment_automatic_materials), 1);
  define(klass, "set_output_format", VELMAR_GUARDED(_set_output_format), 3);
  define(klass, "set_output_directory", VELMAR_GUARDED(_set_output_directory), 2);
  define(klass, "observe", VELMAR_GUARDED(_options_panel_observe), 1);
  define(klass, "output_directory", VELMAR_GUARDED(_output_directory), 1);
  define(klass, "initialize", VELMAR_GUARDED(initialize), 1);
  define(klass, "hide_render_all=", VELMAR_GUARDED(_set_environment_show_render_all), 1);

  init_text_table();
  init_observers();
}

} // namespace velmar
