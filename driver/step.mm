#import "driver/functions.h"

#include <cstdarg>
#include <cstring>

namespace driver {

Class<VOPController> ControllerClass() {
  return NSClassFromString(OPTIONS_PANEL_CONTROLLER_CLASS);
}

id<VOPController> Controller() {
  Class<VOPController> cls = ControllerClass();
  if (!cls || ![cls isBuilt])
    [NSException raise:@"PanelNotBuilt" format:@"the options panel has not been built"];
  return [cls sharedController];
}

NSWindow *PanelWindow() {
  return [Controller() window];
}

static NSString *const kRefused = @"Refused";

void Refuse(NSString *format, ...) {
  va_list args;
  va_start(args, format);
  [NSException raise:kRefused format:format arguments:args];
  va_end(args);
}

NSNumber *Flag(BOOL value) {
  return [NSNumber numberWithBool:value];
}

// Both toolkits answer numberWithBool: with one of two shared objects. Their
// objCType tells nothing: Apple's say "c" even where BOOL is _Bool ("B", arm64).
static bool IsFlag(NSNumber *number) {
  return number == Flag(YES) || number == Flag(NO);
}

NSArray *RectArray(NSRect r) {
  return @[ @(r.origin.x), @(r.origin.y), @(r.size.width), @(r.size.height) ];
}

static VALUE NumberToRuby(NSNumber *number) {
  const char *type = [number objCType];
  if (IsFlag(number))
    return [number boolValue] ? Qtrue : Qfalse;
  if (strcmp(type, @encode(double)) == 0 || strcmp(type, @encode(float)) == 0)
    return rb_float_new([number doubleValue]);
  return LL2NUM([number longLongValue]);
}

VALUE ToRuby(id object) {
  if (!object || object == [NSNull null])
    return Qnil;
  if ([object isKindOfClass:[NSString class]])
    return rb_utf8_str_new_cstr([object UTF8String]);
  if ([object isKindOfClass:[NSNumber class]])
    return NumberToRuby(object);
  if ([object isKindOfClass:[NSArray class]]) {
    VALUE array = rb_ary_new();
    for (id element in object)
      rb_ary_push(array, ToRuby(element));
    return array;
  }
  if ([object isKindOfClass:[NSDictionary class]]) {
    VALUE hash = rb_hash_new();
    for (id key in object)
      rb_hash_aset(hash, ID2SYM(rb_intern([key UTF8String])), ToRuby([object objectForKey:key]));
    return hash;
  }
  return rb_utf8_str_new_cstr([[object description] UTF8String]);
}

VALUE Name(VALUE name) {
  VALUE text = rb_sym2str(rb_to_symbol(name));
  StringValueCStr(text);
  return text;
}

NSString *FailureOf(NSException *exception) {
  if ([[exception name] isEqual:kRefused])
    return [[exception reason] copy];
  return [[NSString alloc] initWithFormat:@"%@: %@", [exception name], [exception reason]];
}

// Whether a step's observers' exceptions are raised by the step rather than
// reported on $stderr.
static bool raisingObserverErrors = false;

HoldObserverErrors ObserverErrorHolder() {
  static HoldObserverErrors hold = nullptr;
  if (!raisingObserverErrors)
    return nullptr;
  if (!hold)
    hold = OPTIONS_PANEL_FIND(OptionsPanel_hold_observer_errors);
  return hold;
}

VALUE FinishStep(id result, VALUE message, VALUE observerError) {
  // Reading an object's text autoreleases too.
  NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
  VALUE value = ToRuby(result);
  [result release];
  [pool drain];
  // The step was the user's: an exit, signal or throw of an observer goes on
  // here, as it would at a host's next turn, once every toolkit frame is gone.
  velmar::resume_options_panel_jump();
  if (!NIL_P(message)) {
    if (!NIL_P(observerError))
      rb_set_errinfo(observerError);
    rb_exc_raise(rb_exc_new_str(rb_eRuntimeError, message));
  }
  if (!NIL_P(observerError))
    rb_exc_raise(observerError);
  return value;
}

static VALUE set_raise_observer_errors(VALUE, VALUE on) {
  raisingObserverErrors = RTEST(on);
  return on;
}

static VALUE raise_observer_errors(VALUE) {
  return raisingObserverErrors ? Qtrue : Qfalse;
}

static const Function kStepFunctions[] = {
    {"raise_observer_errors=", DRIVER_FUNCTION(set_raise_observer_errors), 1},
    {"raise_observer_errors?", DRIVER_FUNCTION(raise_observer_errors), 0},
};
const FunctionGroup kStep = Group(kStepFunctions);

} // namespace driver
