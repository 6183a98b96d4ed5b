// C++ code that Ruby calls (a method's handler, an rb_protect body) must not
// let a C++ exception unwind through Ruby's C frames, which have no unwind
// information and would end in std::terminate.
#pragma once

#include <ruby.h>

#include <exception>
#include <new>

namespace velmar {

// Runs the body; what it throws becomes a Ruby exception, raised only once the
// catch has ended and every C++ frame of the body is gone: NoMemoryError for
// std::bad_alloc, RuntimeError with the message for anything else.
template <typename Body> VALUE guard_cxx(Body body) {
  enum { kNone, kNoMemory, kOther } failure = kNone;
  char message[256] = "";
  VALUE result = Qnil;
  try {
    result = body();
  } catch (const std::bad_alloc &) {
    failure = kNoMemory;
  } catch (const std::exception &exception) {
    failure = kOther;
    snprintf(message, sizeof message, "%s", exception.what());
  } catch (...) {
    failure = kOther;
    snprintf(message, sizeof message, "unknown C++ exception");
  }
  if (failure == kNoMemory)
    rb_memerror();
  if (failure == kOther)
    rb_raise(rb_eRuntimeError, "%s", message);
  return result;
}

// A function of Ruby values wrapped in guard_cxx, with the same parameters.
template <typename Function, Function F> struct Guarded;
template <typename... Args, VALUE (*F)(Args...)> struct Guarded<VALUE (*)(Args...), F> {
  static VALUE call(Args... args) {
    return guard_cxx([&] { return F(args...); });
  }
};

} // namespace velmar

// The guarded handler of a method, as rb_define_method takes it on every Ruby:
// before 2.7 its headers declare method functions with ANYARGS.
#define VELMAR_GUARDED(function)                                                                   \
  RUBY_METHOD_FUNC((velmar::Guarded<decltype(&function), &function>::call))
