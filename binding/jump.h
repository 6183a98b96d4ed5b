// What a jump out of Ruby code, stopped by rb_protect, carried.
#pragma once

#include <ruby.h>

namespace velmar {

// A raise (exit and signals included) leaves its exception in rb_errinfo(); a
// throw or a break leaves an internal record there instead, which must never
// reach an ordinary method: Ruby 3.3 crashes on rb_obj_is_kind_of of one.
// Returns the exception, or Qnil for any other jump.
inline VALUE exception_of_jump() {
  VALUE info = rb_errinfo();
  if (SPECIAL_CONST_P(info) || BUILTIN_TYPE(info) != T_OBJECT)
    return Qnil;
  return RTEST(rb_obj_is_kind_of(info, rb_eException)) ? info : Qnil;
}

} // namespace velmar
