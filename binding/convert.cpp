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

Word word_text(VALUE string) {
  const char *bytes = RSTRING_PTR(string);
  size_t length = static_cast<size_t>(RSTRING_LEN(string));
  const void *nul = std::memchr(bytes, '\0', length);
  return Word{bytes, nul ? static_cast<size_t>(static_cast<const char *>(nul) - bytes) : length};
}

VALUE utf8_string(const std::string &text) {
  std::string valid = scrub_utf8(text.data(), text.size());
  return rb_utf8_str_new(valid.data(), static_cast<long>(valid.size()));
}

} // namespace velmar
