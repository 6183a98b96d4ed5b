#include "binding/convert.h"
#include "binding/method_table.h"
#include "binding/script_call.h"
#include "binding/taken_words.h"

namespace velmar {

using panel::Option;
using panel::Slider;

static VALUE set_box(Option option, VALUE on) {
  ensure_panel();
  bool value = bool_argument(on);
  return raise_or_true(attempt([=] { return panel::set_option(option, value); }));
}

static VALUE set_slider(Slider slider, VALUE value) {
  ensure_panel();
  int32_t number = int32_argument(value, "value");
  return raise_or_true(attempt([=] { return panel::set_slider(slider, number); }));
}

static VALUE set_environment_spherical_point_lights(VALUE, VALUE on) {
  return set_box(Option::SphericalLights, on);
}

static VALUE set_environment_caustic(VALUE, VALUE on) {
  return set_box(Option::Caustics, on);
}

static VALUE set_environment_clay(VALUE, VALUE on) {
  return set_box(Option::Clay, on);
}

static VALUE set_environment_caching(VALUE, VALUE on) {
  return set_box(Option::Caching, on);
}

static VALUE set_environment_information_bar(VALUE, VALUE on) {
  return set_box(Option::InformationBar, on);
}

static VALUE set_environment_translucent_color(VALUE, VALUE on) {
  return set_box(Option::TranslucentColor, on);
}

static VALUE set_environment_automatic_materials(VALUE, VALUE on) {
  return set_box(Option::AutomaticMaterials, on);
}

// The two sliders keep the names scripts already use: brightness is the
// Intensity slider and contrast the Exposure slider.
static VALUE set_environment_brightness(VALUE, VALUE value) {
  return set_slider(Slider::Intensity, value);
}

static VALUE set_environment_contrast(VALUE, VALUE value) {
  return set_slider(Slider::Exposure, value);
}

static VALUE set_environment_background(VALUE, VALUE background) {
  ensure_panel();
  VALUE word = string_argument(background, "background");
  warn_if_taken_as_last(word, "background", kBackgrounds);
  return raise_or_true(
      attempt([=] { return panel::set_background(kBackgrounds.named(word_text(word))); }));
}

void define_environment_methods(VALUE klass) {
  static const Method methods[] = {
      {"set_environment_spherical_point_lights",
       VELMAR_GUARDED(set_environment_spherical_point_lights), 1},
      {"set_environment_background", VELMAR_GUARDED(set_environment_background), 1},
      {"set_environment_information_bar", VELMAR_GUARDED(set_environment_information_bar), 1},
      {"set_environment_clay", VELMAR_GUARDED(set_environment_clay), 1},
      {"set_environment_caching", VELMAR_GUARDED(set_environment_caching), 1},
      {"set_environment_caustic", VELMAR_GUARDED(set_environment_caustic), 1},
      {"set_environment_brightness", VELMAR_GUARDED(set_environment_brightness), 1},
      {"set_environment_contrast", VELMAR_GUARDED(set_environment_contrast), 1},
      {"set_environment_translucent_color", VELMAR_GUARDED(set_environment_translucent_color), 1},
      {"set_environment_automatic_materials", VELMAR_GUARDED(set_environment_automatic_materials),
       1},
  };
  define_methods(klass, methods);
}

} // namespace velmar
