#include "binding/convert.h"

#include "binding/jump.h"
#include "binding/utf8.h"

#include <ruby/encoding.h>

namespace velmar {

namespace {

VALUE to_string(VALUE value) {
  StringValue(value);
  return value;
}

VALUE to_int32(VALUE value) {
  return INT2NUM(NUM2INT(value));
}

// "Integer 4294967296" for a number, whose value says what is wrong with it;
// the class alone for anything else.
VALUE described(VALUE value) {
  VALUE name = rb_class_name(rb_obj_class(value));
  if (RTEST(rb_obj_is_kind_of(value, rb_cInteger)) || RTEST(rb_obj_is_kind_of(value, rb_cFloat)))
    return rb_sprintf("%" PRIsVALUE " %" PRIsVALUE, name, rb_inspect(value));
  return name;
}

// Runs Ruby's own conversion; a TypeError or RangeError it raises (or one of
// their subclasses) is raised again, of the same class, naming the method
// that is running and the argument. Anything else goes on as it was.
VALUE converted(VALUE (*convert)(VALUE), VALUE value, const char *expected, const char *argument) {
  int state = 0;
  VALUE result = rb_protect(convert, value, &state);
  if (!state)
    return result;
  // A throw out of the argument's own to_str leaves no exception to look at.
  VALUE error = exception_of_jump();
  if (NIL_P(error) ||
      (!rb_obj_is_kind_of(error, rb_eTypeError) && !rb_obj_is_kind_of(error, rb_eRangeError)))
    rb_jump_tag(state);
  rb_set_errinfo(Qnil);
  VALUE message = rb_sprintf("%" PRIsVALUE ": %s must be %s (got %" PRIsVALUE ")",
                             rb_id2str(rb_frame_this_func()), argument, expected, described(value));
  rb_exc_raise(rb_exc_new_str(rb_obj_class(error), rb_enc_associate(message, rb_utf8_encoding())));
}

} // namespace

VALUE string_argument(VALUE value, const char *argument) {
  return converted(to_string, value, "a String", argument);
}

int32_t int32_argument(VALUE value, const char *argument) {
  return NUM2INT(converted(to_int32, value, "an Integer from -2147483648 to 2147483647", argument));
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

VALUE utf8_string(const char *bytes, size_t length) {
  // The String is made at its final length before any byte is written, so
  // that no C++ object is alive if Ruby runs out of memory and raises.
  VALUE string =
      rb_utf8_str_new(nullptr, static_cast<long>(scrub_utf8_into(bytes, length, nullptr)));
  scrub_utf8_into(bytes, length, RSTRING_PTR(string));
  return string;
}

} // namespace velmar
