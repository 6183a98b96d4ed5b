#include "binding/method_table.h"

#include "binding/cxx_guard.h"
#include "binding/handlers.h"
#include "binding/observers.h"
#include "binding/text_table.h"

namespace velmar {

using panel::Option;
using panel::Slider;

// Every handler is guarded: a C++ exception becomes a Ruby one on the way out.
struct Method {
  const char *name;
  VALUE (*handler)(ANYARGS);
  int arity;
};

static const Method kMethods[] = {
    {"initialize", VELMAR_GUARDED(initialize), 1},
    {"show", VELMAR_GUARDED(_options_panel_show), 0},
    {"close", VELMAR_GUARDED(_options_panel_close), 0},
    {"text=", VELMAR_GUARDED(_options_panel_title_assign), 1},
    {"observe", VELMAR_GUARDED(_options_panel_observe), 1},
    {"preset=", VELMAR_GUARDED(_preset), 1},
    {"populate_presets", VELMAR_GUARDED(_populate_presets), 1},
    {"set_output_dimensions", VELMAR_GUARDED(_set_output_dimensions), 5},
    {"output_format=", VELMAR_GUARDED(_output_format), 1},
    {"set_output_format", VELMAR_GUARDED(_set_output_format), 3},
    {"set_output_directory", VELMAR_GUARDED(_set_output_directory), 2},
    {"output_directory", VELMAR_GUARDED(_output_directory), 1},
    {"set_environment_background", VELMAR_GUARDED(_set_environment_background), 1},
    {"set_environment_spherical_point_lights",
     VELMAR_GUARDED(_set_environment_option<Option::SphericalLights>), 1},
    {"set_environment_caustic", VELMAR_GUARDED(_set_environment_option<Option::Caustics>), 1},
    {"set_environment_clay", VELMAR_GUARDED(_set_environment_option<Option::Clay>), 1},
    {"set_environment_caching", VELMAR_GUARDED(_set_environment_option<Option::Caching>), 1},
    {"set_environment_information_bar",
     VELMAR_GUARDED(_set_environment_option<Option::InformationBar>), 1},
    {"set_environment_translucent_color",
     VELMAR_GUARDED(_set_environment_option<Option::TranslucentColor>), 1},
    {"set_environment_automatic_materials",
     VELMAR_GUARDED(_set_environment_option<Option::AutomaticMaterials>), 1},
    {"set_environment_brightness", VELMAR_GUARDED(_set_environment_slider<Slider::Intensity>), 1},
    {"set_environment_contrast", VELMAR_GUARDED(_set_environment_slider<Slider::Exposure>), 1},
    {"hide_render_all=", VELMAR_GUARDED(_set_environment_show_render_all), 1},
};

void _options_panel_define() {
  VALUE module = rb_define_module("Velmar");
  VALUE klass = rb_define_class_under(module, "OptionsPanelWindow", rb_cObject);
  // The function itself, not the macro that newer Rubies put in its place for C++.
  for (const Method &method : kMethods)
    (rb_define_method)(klass, method.name, method.handler, method.arity);
  init_text_table();
  init_observers();
}

} // namespace velmar
