#include "binding/convert.h"

#include "binding/utf8.h"

#include <ruby/encoding.h>

namespace velmar {

VALUE string_argument(VALUE value) {
  StringValue(value);
  return value;
}

int32_t int32_argument(VALUE value) {
  return NUM2INT(value);
}

std::string utf8_text(VALUE string) {
  return scrub_utf8(RSTRING_PTR(string), static_cast<size_t>(RSTRING_LEN(string)));
}

VALUE utf8_string(const std::string &text) {
  std::string valid = scrub_utf8(text.data(), text.size());
  return rb_utf8_str_new(valid.data(), static_cast<long>(valid.size()));
}

} // namespace velmar
