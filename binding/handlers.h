// The script methods' handlers, one function per method of
// Velmar::OptionsPanelWindow; each ignores its receiver but initialize.
#pragma once

#include "panel/panel_api.h"

#include <ruby.h>

namespace velmar {

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

VALUE _set_environment_background(VALUE self, VALUE background);

// The box setters and the slider setters: one handler each, told apart by the
// control that it sets.
VALUE set_environment_option(panel::Option option, VALUE on);
VALUE set_environment_slider(panel::Slider slider, VALUE value);
template <panel::Option option> VALUE _set_environment_option(VALUE, VALUE on) {
  return set_environment_option(option, on);
}
template <panel::Slider slider> VALUE _set_environment_slider(VALUE, VALUE value) {
  return set_environment_slider(slider, value);
}

} // namespace velmar
