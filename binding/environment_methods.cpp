#include "binding/convert.h"
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

VALUE _set_environment_spherical_point_lights(VALUE, VALUE on) {
  return set_box(Option::SphericalLights, on);
}

VALUE _set_environment_caustic(VALUE, VALUE on) {
  return set_box(Option::Caustics, on);
}

VALUE _set_environment_clay(VALUE, VALUE on) {
  return set_box(Option::Clay, on);
}

VALUE _set_environment_caching(VALUE, VALUE on) {
  return set_box(Option::Caching, on);
}

VALUE _set_environment_information_bar(VALUE, VALUE on) {
  return set_box(Option::InformationBar, on);
}

VALUE _set_environment_translucent_color(VALUE, VALUE on) {
  return set_box(Option::TranslucentColor, on);
}

VALUE _set_environment_automatic_materials(VALUE, VALUE on) {
  return set_box(Option::AutomaticMaterials, on);
}

VALUE _set_environment_brightness(VALUE, VALUE value) {
  return set_slider(Slider::Intensity, value);
}

VALUE _set_environment_contrast(VALUE, VALUE value) {
  return set_slider(Slider::Exposure, value);
}

VALUE _set_environment_background(VALUE, VALUE background) {
  ensure_panel();
  VALUE word = string_argument(background, "background");
  warn_if_taken_as_last(word, "background", kBackgrounds);
  return raise_or_true(
      attempt([=] { return panel::set_background(kBackgrounds.named(word_text(word))); }));
}

} // namespace velmar
