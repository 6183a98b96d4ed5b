#include "binding/method_table.h"

#include "binding/cxx_guard.h"
#include "binding/first_copy.h"
#include "binding/observers.h"
#include "binding/text_table.h"

namespace velmar {

// The handlers, each in the file of its group: text_table.cpp, observers.cpp,
// panel_methods.cpp, preset_methods.cpp, image_methods.cpp and
// environment_methods.cpp. Each ignores its receiver but initialize.
VALUE initialize(VALUE self, VALUE table);
VALUE _options_panel_title_assign(VALUE self, VALUE title);
VALUE _options_panel_observe(VALUE self, VALUE observer);
VALUE _set_environment_show_render_all(VALUE self, VALUE value);
VALUE _options_panel_show(VALUE self);
VALUE _options_panel_close(VALUE self);
VALUE _preset(VALUE self, VALUE name);
VALUE _populate_presets(VALUE self, VALUE joined_names);
VALUE _set_output_dimensions(VALUE self, VALUE mode, VALUE width, VALUE height,
                             VALUE viewport_width, VALUE viewport_height);
VALUE _output_format(VALUE self, VALUE format);
VALUE _set_output_format(VALUE self, VALUE, VALUE, VALUE);
VALUE _set_output_directory(VALUE self, VALUE mode, VALUE folder);
VALUE _output_directory(VALUE self, VALUE path);
VALUE _set_environment_spherical_point_lights(VALUE self, VALUE on);
VALUE _set_environment_background(VALUE self, VALUE background);
VALUE _set_environment_information_bar(VALUE self, VALUE on);
VALUE _set_environment_clay(VALUE self, VALUE on);
VALUE _set_environment_caching(VALUE self, VALUE on);
VALUE _set_environment_caustic(VALUE self, VALUE on);
VALUE _set_environment_brightness(VALUE self, VALUE value);
VALUE _set_environment_contrast(VALUE self, VALUE value);
VALUE _set_environment_translucent_color(VALUE self, VALUE on);
VALUE _set_environment_automatic_materials(VALUE self, VALUE on);

// Every handler is guarded: a C++ exception becomes a Ruby one on the way out.
struct Method {
  const char *name;
  VALUE (*handler)(ANYARGS);
  int arity;
};

// Each script method's Ruby name beside its handler, in the order of definition.
static const Method kMethods[] = {
    {"show", VELMAR_GUARDED(_options_panel_show), 0},
    {"close", VELMAR_GUARDED(_options_panel_close), 0},
    {"text=", VELMAR_GUARDED(_options_panel_title_assign), 1},
    {"preset=", VELMAR_GUARDED(_preset), 1},
    {"populate_presets", VELMAR_GUARDED(_populate_presets), 1},
    {"set_output_dimensions", VELMAR_GUARDED(_set_output_dimensions), 5},
    {"output_format=", VELMAR_GUARDED(_output_format), 1},
    {"set_environment_spherical_point_lights",
     VELMAR_GUARDED(_set_environment_spherical_point_lights), 1},
    {"set_environment_background", VELMAR_GUARDED(_set_environment_background), 1},
    {"set_environment_information_bar", VELMAR_GUARDED(_set_environment_information_bar), 1},
    {"set_environment_clay", VELMAR_GUARDED(_set_environment_clay), 1},
    {"set_environment_caching", VELMAR_GUARDED(_set_environment_caching), 1},
    {"set_environment_caustic", VELMAR_GUARDED(_set_environment_caustic), 1},
    {"set_environment_brightness", VELMAR_GUARDED(_set_environment_brightness), 1},
    {"set_environment_contrast", VELMAR_GUARDED(_set_environment_contrast), 1},
    {"set_environment_translucent_color", VELMAR_GUARDED(_set_environment_translucent_color), 1},
    {"set_environment_automatic_materials", VELMAR_GUARDED(_set_environment_automatic_materials),
     1},
    {"set_output_format", VELMAR_GUARDED(_set_output_format), 3},
    {"set_output_directory", VELMAR_GUARDED(_set_output_directory), 2},
    {"observe", VELMAR_GUARDED(_options_panel_observe), 1},
    {"output_directory", VELMAR_GUARDED(_output_directory), 1},
    {"initialize", VELMAR_GUARDED(initialize), 1},
    {"hide_render_all=", VELMAR_GUARDED(_set_environment_show_render_all), 1},
};

void _options_panel_define() {
  VALUE module = rb_define_module("Velmar");
  VALUE klass = rb_define_class_under(module, "OptionsPanelWindow", rb_cObject);
  if (!claim_first_copy(klass, reinterpret_cast<const void *>(&_options_panel_define)))
    return;
  // The function itself, not the macro that newer Rubies put in its place for C++.
  for (const Method &method : kMethods)
    (rb_define_method)(klass, method.name, method.handler, method.arity);
  init_text_table(klass);
  init_observers();
}

} // namespace velmar
