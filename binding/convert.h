// Ruby values at the boundary. Checks that can raise come first and build no
// C++ object; the C++ values are made afterwards by calls that cannot raise.
#pragma once

#include <ruby.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace velmar {

// The String itself (or what to_str gives); TypeError for anything else.
// `argument` is the argument's name in docs/API.md: a failed conversion keeps
// its class and its message names the method and the argument.
VALUE string_argument(VALUE value, const char *argument);
// NUM2INT's conversion: TypeError or RangeError for what does not fit 32 bits.
int32_t int32_argument(VALUE value, const char *argument);
// Only true is on.
inline bool bool_argument(VALUE value) {
  return value == Qtrue;
}

// The text of a String checked by string_argument, as valid UTF-8 up to its first NUL.
std::string utf8_text(VALUE string);
// A String's bytes up to its first NUL, not copied, for comparing with the
// words that scripts choose by: those are ASCII, which scrubbing leaves as it
// is and which no invalid byte can match.
struct Word {
  const char *bytes;
  size_t length;

  bool operator==(const char *word) const {
    return std::strlen(word) == length && std::memcmp(word, bytes, length) == 0;
  }
};
Word word_text(VALUE string);

// A new String tagged UTF-8 of the bytes up to the first NUL, made valid UTF-8
// as utf8_text does.
VALUE utf8_string(const char *bytes, size_t length);

} // namespace velmar
