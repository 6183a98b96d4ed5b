#include "binding/handlers.h"

#include "binding/convert.h"
#include "binding/script_call.h"

namespace velmar {

using panel::Option;
using panel::Slider;

VALUE set_environment_option(Option option, VALUE on) {
  ensure_panel();
  bool value = bool_argument(on);
  return raise_or_true(attempt([=] { return panel::set_option(option, value); }));
}

VALUE set_environment_slider(Slider slider, VALUE value) {
  ensure_panel();
  int32_t number = int32_argument(value);
  return raise_or_true(attempt([=] { return panel::set_slider(slider, number); }));
}

VALUE _set_environment_background(VALUE, VALUE background) {
  ensure_panel();
  VALUE word = string_argument(background);
  return raise_or_true(
      attempt([=] { return panel::set_background(kBackgrounds.named(word_text(word))); }));
}

} // namespace velmar
