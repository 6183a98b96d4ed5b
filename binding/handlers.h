// The script methods' handlers, one function per method; each ignores its receiver.
#pragma once

#include <ruby.h>

namespace velmar {

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

} // namespace velmar
