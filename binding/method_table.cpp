#include "binding/method_table.h"

#include "binding/handlers.h"
#include "binding/observers.h"
#include "binding/text_table.h"

namespace velmar {

void _options_panel_define() {
  VALUE module = rb_define_module("Velmar");
  VALUE klass = rb_define_class_under(module, "OptionsPanelWindow", rb_cObject);

  rb_define_method(klass, "show", _options_panel_show, 0);
  rb_define_method(klass, "close", _options_panel_close, 0);
  rb_define_method(klass, "text=", _options_panel_title_assign, 1);
  rb_define_method(klass, "preset=", _preset, 1);
  rb_define_method(klass, "populate_presets", _populate_presets, 1);
  rb_define_method(klass, "set_output_dimensions", _set_output_dimensions, 5);
  rb_define_method(klass, "output_format=", _output_format, 1);
  rb_define_method(klass, "set_environment_spherical_point_lights",
                   _set_environment_spherical_point_lights, 1);
  rb_define_method(klass, "set_environment_background", _set_environment_background, 1);
  rb_define_method(klass, "set_environment_information_bar", _set_environment_information_bar, 1);
  rb_define_method(klass, "set_environment_clay", _set_environment_clay, 1);
  rb_define_method(klass, "set_environment_caching", _set_environment_caching, 1);
  rb_define_method(klass, "set_environment_caustic", _set_environment_caustic, 1);
  rb_define_method(klass, "set_environment_brightness", _set_environment_brightness, 1);
  rb_define_method(klass, "set_environment_contrast", _set_environment_contrast, 1);
  rb_define_method(klass, "set_environment_translucent_color", _set_environment_translucent_color,
                   1);
  rb_define_method(klass, "set_environment_automatic_materials",
                   _set_environment_automatic_materials, 1);
  rb_define_method(klass, "set_output_format", _set_output_format, 3);
  rb_define_method(klass, "set_output_directory", _set_output_directory, 2);
  rb_define_method(klass, "observe", _options_panel_observe, 1);
  rb_define_method(klass, "output_directory", _output_directory, 1);
  rb_define_method(klass, "initialize", initialize, 1);
  rb_define_method(klass, "hide_render_all=", _set_environment_show_render_all, 1);

  init_text_table();
  init_observers();
}

} // namespace velmar
