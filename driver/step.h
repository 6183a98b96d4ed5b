// One driver step: the toolkit work a driver function does, run in its own
// pool on the main thread, with every failure turned into a Ruby exception
// only once the toolkit's frames are gone. Every room of the driver uses it.
#pragma once

#import <AppKit/AppKit.h>

#include <ruby.h>

#include "binding/cxx_guard.h"
#include "binding/exports.h"
#include "binding/jump.h"
#include "platform/threads.h"

namespace driver {

// The extension's controller class, or Nil while the extension is not loaded.
Class<VOPController> ControllerClass();
// The built controller; a toolkit exception when there is none.
id<VOPController> Controller();
NSWindow *PanelWindow();

// A step the user could not take: its message is only the reason, which
// names the control.
void Refuse(NSString *format, ...) NS_FORMAT_FUNCTION(1, 2);

NSNumber *Flag(BOOL value);
NSArray *RectArray(NSRect r);
// Strings, numbers, flags, arrays and dictionaries (keys as Symbols) as Ruby values.
VALUE ToRuby(id object);

// A control's name as a String, from a Symbol or String: TypeError for anything
// else, ArgumentError for a NUL inside. Held by the step's closure while it runs.
VALUE Name(VALUE name);

// Runs one toolkit step in its own pool; a toolkit exception becomes a Ruby
// RuntimeError, raised only after the pool and the @try frame are gone. Every
// Ruby argument is converted before: a conversion that raises would leave the
// pool undrained. A C++ exception drains the pool on its way to the guard.
template <typename Step> struct StepRun {
  Step step;
  id result;     // retained
  VALUE message; // the failure, or Qnil
};

// The message of a step's failure, retained.
NSString *FailureOf(NSException *exception);

template <typename Step> void RunStep(void *context) {
  StepRun<Step> *run = static_cast<StepRun<Step> *>(context);
  NSString *failure = nil;
  NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
  try {
    @try {
      run->result = [run->step() retain];
    } @catch (NSException *exception) {
      failure = FailureOf(exception);
    }
  } catch (...) {
    [pool drain];
    throw;
  }
  // UTF8String autoreleases the bytes it returns: the message is read while the
  // pool is still there, or GNUstep leaks them with a warning at every failure.
  if (failure) {
    run->message = rb_utf8_str_new_cstr([failure UTF8String]);
    [failure release];
  }
  [pool drain];
}

// How a step holds its observers' exceptions: the extension's way when it is
// loaded and raise_observer_errors is on, else nullptr (they are reported on $stderr).
using HoldObserverErrors = decltype(&OptionsPanel_hold_observer_errors);
HoldObserverErrors ObserverErrorHolder();
// The step's result as a Ruby value, then the raises in order (Drive).
VALUE FinishStep(id result, VALUE message, VALUE observerError);

// Runs the step, then raises: an observer's exit, signal or throw first, then
// the step's own failure (with a held observer exception as its cause), then
// a held observer exception.
template <typename Step> VALUE Drive(Step step) {
  StepRun<Step> run = {step, nil, Qnil};
  HoldObserverErrors hold = ObserverErrorHolder();
  VALUE observerError = hold ? hold(RunStep<Step>, &run) : Qnil;
  if (!hold)
    RunStep<Step>(&run);
  return FinishStep(run.result, run.message, observerError);
}

// Every function belongs to the main thread, as the panel's methods do: a
// test must not pass for a click that no person could make.
template <typename Function, Function F> struct MainThreadOnly;
template <typename... Args, VALUE (*F)(Args...)> struct MainThreadOnly<VALUE (*)(Args...), F> {
  static VALUE call(Args... args) {
    if (!OnMainThread())
      rb_raise(rb_eThreadError, "must be called on the main thread");
    return F(args...);
  }
};

// A driver function's Ruby name, its handler (guarded: a C++ exception
// becomes a Ruby one on the way out) and its arity.
struct Function {
  const char *name;
  VALUE (*handler)(ANYARGS);
  int arity;
};
// One room's functions.
struct FunctionGroup {
  const Function *functions;
  size_t count;
};
template <size_t Count> FunctionGroup Group(const Function (&functions)[Count]) {
  return FunctionGroup{functions, Count};
}

} // namespace driver

#define DRIVER_FUNCTION(function)                                                                  \
  RUBY_METHOD_FUNC(                                                                                \
      (velmar::Guarded<decltype(&function),                                                        \
                       &driver::MainThreadOnly<decltype(&function), &function>::call>::call))
