#include "binding/convert.h"
#include "binding/method_table.h"
#include "binding/script_call.h"
#include "binding/taken_words.h"

#include <algorithm>

namespace velmar {

// Run under rb_protect by set_output_dimensions, which keeps a raise for later.
static VALUE viewport_height_argument(VALUE value) {
  return INT2NUM(int32_argument(value, "viewport_height"));
}

static VALUE set_output_dimensions(VALUE, VALUE mode, VALUE width, VALUE height,
                                   VALUE viewport_width, VALUE viewport_height) {
  ensure_panel();
  VALUE mode_text = string_argument(mode, "mode");
  int32_t w = int32_argument(width, "width");
  int32_t h = int32_argument(height, "height");
  int32_t vw = int32_argument(viewport_width, "viewport_width");
  // The viewport width is stored even when the height then fails to convert:
  // that raise waits in `state` until the panel has stored the width.
  int state = 0;
  VALUE vh = rb_protect(viewport_height_argument, viewport_height, &state);
  if (!state)
    warn_if_taken_as_last(mode_text, "mode", kSizeModes);
  panel::OutputDimensions size{
      kSizeModes.named(word_text(mode_text)), w, h, vw, state ? 0 : NUM2INT(vh), state == 0};
  VALUE exception = attempt([=] { return panel::set_output_dimensions(size); });
  if (state)
    rb_jump_tag(state);
  return raise_or_true(exception);
}

static VALUE output_format_assign(VALUE, VALUE format) {
  ensure_panel();
  VALUE text = string_argument(format, "format");
  warn_if_taken_as_last(text, "format", kImageFormats, kTransparentPngWord);
  return raise_or_true(attempt([=] {
    Word word = word_text(text);
    bool transparent = word == kTransparentPngWord;
    ImageFormat chosen = transparent ? ImageFormat::Png : kImageFormats.named(word);
    return panel::set_output_format(chosen, transparent);
  }));
}

// Kept for older scripts: it builds the panel and changes nothing.
static VALUE set_output_format(VALUE, VALUE, VALUE, VALUE) {
  ensure_panel();
  return Qtrue;
}

static VALUE set_output_directory(VALUE, VALUE mode, VALUE folder) {
  ensure_panel();
  VALUE mode_text = string_argument(mode, "mode");
  VALUE folder_text = string_argument(folder, "folder");
  warn_if_taken_as_last(mode_text, "mode", kSaveLocations);
  return raise_or_true(attempt([=] {
    return panel::set_output_directory(kSaveLocations.named(word_text(mode_text)),
                                       utf8_text(folder_text));
  }));
}

// A copy of the path with every backslash turned into a forward slash.
static VALUE output_directory(VALUE, VALUE path) {
  VALUE text = string_argument(path, "path");
  VALUE copy = utf8_string(RSTRING_PTR(text), static_cast<size_t>(RSTRING_LEN(text)));
  RB_GC_GUARD(text);
  char *bytes = RSTRING_PTR(copy);
  std::replace(bytes, bytes + RSTRING_LEN(copy), '\\', '/');
  return copy;
}

void define_image_methods(VALUE klass) {
  static const Method methods[] = {
      {"set_output_dimensions", VELMAR_GUARDED(set_output_dimensions), 5},
      {"output_format=", VELMAR_GUARDED(output_format_assign), 1},
      {"set_output_format", VELMAR_GUARDED(set_output_format), 3},
      {"set_output_directory", VELMAR_GUARDED(set_output_directory), 2},
      {"output_directory", VELMAR_GUARDED(output_directory), 1},
  };
  define_methods(klass, methods);
}

} // namespace velmar
