#include "binding/convert.h"
#include "binding/script_call.h"
#include "binding/taken_words.h"

#include <algorithm>

namespace velmar {

VALUE _set_output_dimensions(VALUE, VALUE mode, VALUE width, VALUE height, VALUE viewport_width,
                             VALUE viewport_height) {
  ensure_panel();
  VALUE mode_text = string_argument(mode, "mode");
  int32_t w = int32_argument(width, "width");
  int32_t h = int32_argument(height, "height");
  // The viewport size is remembered as each half converts, whatever fails later.
  int32_t vw = int32_argument(viewport_width, "viewport_width");
  raise_or_true(attempt([=] { return panel::remember_viewport_width(vw); }));
  int32_t vh = int32_argument(viewport_height, "viewport_height");
  warn_if_taken_as_last(mode_text, "mode", kSizeModes);
  raise_or_true(attempt([=] { return panel::remember_viewport_height(vh); }));
  return raise_or_true(attempt(
      [=] { return panel::set_output_dimensions(kSizeModes.named(word_text(mode_text)), w, h); }));
}

VALUE _output_format(VALUE, VALUE format) {
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

VALUE _set_output_format(VALUE, VALUE, VALUE, VALUE) {
  ensure_panel();
  return Qtrue;
}

VALUE _set_output_directory(VALUE, VALUE mode, VALUE folder) {
  ensure_panel();
  VALUE mode_text = string_argument(mode, "mode");
  VALUE folder_text = string_argument(folder, "folder");
  warn_if_taken_as_last(mode_text, "mode", kSaveLocations);
  return raise_or_true(attempt([=] {
    return panel::set_output_directory(kSaveLocations.named(word_text(mode_text)),
                                       utf8_text(folder_text));
  }));
}

static std::string with_forward_slashes(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

static VALUE forward_slash_copy(VALUE text) {
  return utf8_string(with_forward_slashes(utf8_text(text)));
}

VALUE _output_directory(VALUE, VALUE path) {
  return forward_slash_copy(string_argument(path, "path"));
}

} // namespace velmar
