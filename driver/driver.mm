// Acts as the user on the options panel through the toolkit's own paths, and
// reads back what the user sees. Controls are reached by their names in the
// controller (or the readable names of control_names.h), so the panel itself
// carries no test hooks.
#import <AppKit/AppKit.h>

#include <ruby.h>
#include <objc/runtime.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <ctime>
#include <vector>

#include "binding/cxx_guard.h"
#include "binding/exports.h"
#include "binding/first_copy.h"
#include "binding/jump.h"
#include "driver/control_names.h"
#import "driver/keys.h"
#import "platform/platform.h"
#include "platform/first_copy_classes.h"
#include "platform/threads.h"

// A slider that draws, and takes presses, on a track narrower than its frame.
@interface NSView (Track)
- (NSRect)trackFrame;
@end

// Answers the modal folder chooser from inside its session.
@interface VOPFolderChooserAnswer : NSObject {
@public
  NSString *folder; // nil: cancel
  BOOL closing;     // closed as a window manager closes it, not answered
  BOOL answered;
  long long shownAt; // CLOCK_MONOTONIC ns when first seen on screen and drawn; 0 until then
}
- (void)answer;
- (void)answerOnceShown;
- (void)giveUp;
@end

// A window manager's close (its title-bar button, Alt+F4) as the window
// receives it: GNUstep's X back-end makes this event of the WM_DELETE_WINDOW
// message; on AppKit the close button performs the close itself.
static void CloseAsWindowManager(NSWindow *window) {
#ifdef GNUSTEP
  [window sendEvent:[NSEvent otherEventWithType:NSAppKitDefined
                                       location:NSZeroPoint
                                  modifierFlags:0
                                      timestamp:0
                                   windowNumber:[window windowNumber]
                                        context:nil
                                        subtype:GSAppKitWindowClose
                                          data1:0
                                          data2:0]];
#else
  [window performClose:nil];
#endif
}

@implementation VOPFolderChooserAnswer
- (void)answer {
  NSOpenPanel *chooser = [NSOpenPanel openPanel];
  answered = YES;
  if (closing) {
    CloseAsWindowManager(chooser);
    // One that stays open is not answered, and is aborted at the time limit.
    answered = ![chooser isVisible];
  } else if (folder) {
    [chooser setDirectoryURL:[NSURL fileURLWithPath:folder isDirectory:YES]];
    [chooser ok:nil];
  } else {
    [chooser cancel:nil];
  }
}
// Looks every millisecond of the modal session until the chooser is on
// screen with every view drawn, as a user would first see it, then answers.
- (void)answerOnceShown {
  // Not +openPanel, which sets the shared chooser up anew each time it is asked.
  NSWindow *chooser = [NSApp modalWindow];
  if (![chooser isVisible] || [chooser viewsNeedDisplay]) {
    [self performSelector:@selector(answerOnceShown)
               withObject:nil
               afterDelay:0.001
                  inModes:@[ NSModalPanelRunLoopMode ]];
    return;
  }
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  shownAt = now.tv_sec * 1000000000LL + now.tv_nsec;
  [self answer];
}
- (void)giveUp {
  if (!answered)
    [NSApp abortModal];
}
@end

const char velmar::kFirstCopyMarkerClass[] = "VOPFolderChooserAnswer";

static VOPFolderChooserAnswer *pendingAnswer = nil;

// The extension's controller class, or Nil while the extension is not loaded.
static Class<VOPController> ControllerClass() {
  return NSClassFromString(OPTIONS_PANEL_CONTROLLER_CLASS);
}

static id<VOPController> Controller() {
  Class<VOPController> cls = ControllerClass();
  if (!cls || ![cls isBuilt])
    [NSException raise:@"PanelNotBuilt" format:@"the options panel has not been built"];
  return [cls sharedController];
}

// A step the user could not take: its message is only the reason, which
// names the control.
static NSString *const kRefused = @"Refused";

static void Refuse(NSString *format, ...) {
  va_list args;
  va_start(args, format);
  [NSException raise:kRefused format:format arguments:args];
  va_end(args);
}

// How many letters must be added, dropped or changed to make one name the other.
static size_t EditDistance(const char *a, const char *b) {
  size_t lengthB = strlen(b);
  std::vector<size_t> row(lengthB + 1);
  for (size_t j = 0; j <= lengthB; ++j)
    row[j] = j;
  for (size_t i = 1; a[i - 1]; ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= lengthB; ++j) {
      size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
      diagonal = above;
    }
  }
  return row[lengthB];
}

// The readable names nearest to an unknown one, at most three.
static NSString *NearestNames(const char *name) {
  size_t best = SIZE_MAX;
  for (const ControlName &entry : kControlNames)
    best = std::min(best, EditDistance(name, entry.readable));
  NSMutableArray *nearest = [NSMutableArray array];
  for (const ControlName &entry : kControlNames)
    if (EditDistance(name, entry.readable) == best && [nearest count] < 3)
      [nearest addObject:[NSString stringWithUTF8String:entry.readable]];
  return [nearest componentsJoinedByString:@", "];
}

// Only an instance variable that holds a view is a control: reading any other
// as an object would crash.
static id ControlNamed(const char *name) {
  id controller = Controller();
  Ivar ivar = class_getInstanceVariable([controller class], ControllerName(name));
  id view = ivar && ivar_getTypeEncoding(ivar)[0] == '@' ? object_getIvar(controller, ivar) : nil;
  if (![view isKindOfClass:[NSView class]])
    Refuse(@"no control named %s (nearest: %@)", name, NearestNames(name));
  return view;
}

// `name` is a String made by Name().
static id Control(VALUE name) {
  return ControlNamed(RSTRING_PTR(name));
}

static NSWindow *PanelWindow() {
  return [Controller() window];
}

static NSNumber *Flag(BOOL value) {
  return [NSNumber numberWithBool:value];
}

// Both toolkits answer numberWithBool: with one of two shared objects. Their
// objCType tells nothing: Apple's say "c" even where BOOL is _Bool ("B", arm64).
static bool IsFlag(NSNumber *number) {
  return number == Flag(YES) || number == Flag(NO);
}

static NSArray *RectArray(NSRect r) {
  return @[ @(r.origin.x), @(r.origin.y), @(r.size.width), @(r.size.height) ];
}

static VALUE ToRuby(id object) {
  if (!object || object == [NSNull null])
    return Qnil;
  if ([object isKindOfClass:[NSString class]])
    return rb_utf8_str_new_cstr([object UTF8String]);
  if ([object isKindOfClass:[NSNumber class]]) {
    const char *type = [object objCType];
    if (IsFlag(object))
      return [object boolValue] ? Qtrue : Qfalse;
    if (strcmp(type, @encode(double)) == 0 || strcmp(type, @encode(float)) == 0)
      return rb_float_new([object doubleValue]);
    return LL2NUM([object longLongValue]);
  }
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

// Runs one toolkit step in its own pool; a toolkit exception becomes a Ruby
// RuntimeError, raised only after the pool and the @try frame are gone. Every
// Ruby argument is converted before: a conversion that raises would leave the
// pool undrained. A C++ exception drains the pool on its way to the guard.
template <typename Step> struct StepRun {
  Step step;
  id result;     // retained
  VALUE message; // the failure, or Qnil
};

static NSString *FailureOf(NSException *exception) {
  if ([[exception name] isEqual:kRefused])
    return [[exception reason] copy];
  return [[NSString alloc] initWithFormat:@"%@: %@", [exception name], [exception reason]];
}

template <typename Step> static void RunStep(void *context) {
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

// Whether a step's observers' exceptions are raised by the step rather than
// reported on $stderr.
static bool raisingObserverErrors = false;

using HoldObserverErrors = decltype(&OptionsPanel_hold_observer_errors);

// The extension's way to hold them, if it is loaded.
static HoldObserverErrors ObserverErrorHolder() {
  static HoldObserverErrors hold = nullptr;
  if (!hold)
    hold = OPTIONS_PANEL_FIND(OptionsPanel_hold_observer_errors);
  return hold;
}

// Runs the step, then raises: an observer's exit, signal or throw first, then
// the step's own failure (with a held observer exception as its cause), then
// a held observer exception.
template <typename Step> static VALUE Drive(Step step) {
  StepRun<Step> run = {step, nil, Qnil};
  HoldObserverErrors hold = raisingObserverErrors ? ObserverErrorHolder() : nullptr;
  VALUE observerError = hold ? hold(RunStep<Step>, &run) : Qnil;
  if (!hold)
    RunStep<Step>(&run);
  // Reading an object's text autoreleases too.
  NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
  VALUE value = ToRuby(run.result);
  [run.result release];
  [pool drain];
  // The step was the user's: an exit, signal or throw of an observer goes on
  // here, as it would at a host's next turn, once every toolkit frame is gone.
  velmar::resume_options_panel_jump();
  if (!NIL_P(run.message)) {
    if (!NIL_P(observerError))
      rb_set_errinfo(observerError);
    rb_exc_raise(rb_exc_new_str(rb_eRuntimeError, run.message));
  }
  if (!NIL_P(observerError))
    rb_exc_raise(observerError);
  return value;
}

// A control's name as a String, from a Symbol or String: TypeError for anything
// else, ArgumentError for a NUL inside. Held by the step's closure while it runs.
static VALUE Name(VALUE name) {
  VALUE text = rb_sym2str(rb_to_symbol(name));
  StringValueCStr(text);
  return text;
}

// ---- acting as the user ----

// The tab view, and one of its tabs by index.
static NSTabView *Tabs() {
  return ControlNamed("myTabView");
}

static NSTabViewItem *TabAt(long index) {
  NSTabView *tabView = Tabs();
  if (index < 0 || index >= [tabView numberOfTabViewItems])
    Refuse(@"tabs has no tab %ld", index);
  return [tabView tabViewItemAtIndex:index];
}

// A user can act only while the panel is on screen.
static NSWindow *ShownPanel(NSString *what) {
  NSWindow *window = PanelWindow();
  if (![window isVisible])
    Refuse(@"%@ is not on screen: the panel is closed", what);
  return window;
}

// A control on a tab that is not selected is refused with the tab's index,
// which choose_tab takes, and its label, which the user reads.
static void RefuseIfOnHiddenTab(NSView *view, NSString *what) {
  NSTabView *tabView = Tabs();
  for (NSTabViewItem *item in [tabView tabViewItems])
    if (item != [tabView selectedTabViewItem] && [view isDescendantOf:[item view]])
      Refuse(@"%@ is on tab %ld (\"%@\"), which is not showing", what,
             (long)[tabView indexOfTabViewItem:item], [item label]);
}

// A user acts only on what shows: a control of the panel on screen, on the
// tab that is selected, and enabled. `what` names it in the refusal.
static id Reachable(NSView *view, NSString *what) {
  ShownPanel(what);
  RefuseIfOnHiddenTab(view, what);
  if (![view window])
    Refuse(@"%@ is not on the window", what);
  if ([view isKindOfClass:[NSControl class]] && ![(NSControl *)view isEnabled])
    Refuse(@"%@ is disabled", what);
  return view;
}

// The named control, of the kind the step acts on, where the user can reach it.
static id Actionable(VALUE name, Class kind, NSString *kindName) {
  const char *text = RSTRING_PTR(name);
  NSView *view = ControlNamed(text);
  NSString *what = [NSString stringWithUTF8String:text];
  if (![view isKindOfClass:kind])
    Refuse(@"%@ is not %@", what, kindName);
  return Reachable(view, what);
}

static NSButton *Button(VALUE name) {
  return Actionable(name, [NSButton class], @"a button");
}

static VALUE click(VALUE, VALUE name) {
  VALUE target = Name(name);
  return Drive([=] {
    [Button(target) performClick:nil];
    return (id)nil;
  });
}

// Sends the control's action as the toolkit does once the user's gesture ends.
static void SendAction(NSControl *control) {
  if ([control action])
    [control sendAction:[control action] to:[control target]];
}

// What a button does once the user's click completes: its action, sent as
// the toolkit sends it. performClick: also flashes the button for a tenth of a
// second first, which is longer than anything the panel does.
static VALUE press(VALUE, VALUE name) {
  VALUE target = Name(name);
  return Drive([=] {
    SendAction(Button(target));
    return (id)nil;
  });
}

// A click that the event loop delivers after the delay, as a user's arrives
// while a host waits for events.
static VALUE click_later(VALUE, VALUE name, VALUE seconds) {
  VALUE target = Name(name);
  double delay = NUM2DBL(seconds);
  return Drive([=] {
    [Button(target) performSelector:@selector(performClick:)
                         withObject:nil
                         afterDelay:delay
                            inModes:@[ NSDefaultRunLoopMode ]];
    return (id)nil;
  });
}

// Cell `index` of a radio group, counted in the order of its cells.
static NSCell *CellAt(NSMatrix *group, long index, const char *name) {
  long columns = [group numberOfColumns];
  if (index < 0 || index >= [group numberOfRows] * columns)
    Refuse(@"%s has no cell %ld", name, index);
  return [group cellAtRow:index / columns column:index % columns];
}

static VALUE click_cell(VALUE, VALUE name, VALUE index) {
  long i = NUM2LONG(index);
  VALUE target = Name(name);
  return Drive([=] {
    NSMatrix *group = Actionable(target, [NSMatrix class], @"a radio group");
    if (![CellAt(group, i, RSTRING_PTR(target)) isEnabled])
      Refuse(@"cell %ld of %s is disabled", i, RSTRING_PTR(target));
    [group selectCellAtRow:i / [group numberOfColumns] column:i % [group numberOfColumns]];
    [group sendAction];
    return (id)nil;
  });
}

static VALUE pick(VALUE, VALUE name, VALUE index) {
  long i = NUM2LONG(index);
  VALUE target = Name(name);
  return Drive([=] {
    NSComboBox *combo = Actionable(target, [NSComboBox class], @"a list");
    if (i < 0 || i >= [combo numberOfItems])
      Refuse(@"%s has no item %ld", RSTRING_PTR(target), i);
    // As a click in the toolkit's list does: the box shows the item picked
    // before the action is sent.
    [combo selectItemAtIndex:i];
    [combo setStringValue:[[combo itemObjectValueAtIndex:i] description]];
    SendAction(combo);
    return (id)nil;
  });
}

// Where a drag that the user lets go at `value` leaves the slider: pinned to
// its range, the action sent as the toolkit sends it when the drag ends.
// Posted mouse events can't make the drag itself: GNUstep's slider tracks the
// pointer's real position, not the events' locations.
static VALUE slide(VALUE, VALUE name, VALUE value) {
  int v = NUM2INT(value);
  VALUE target = Name(name);
  return Drive([=] {
    NSSlider *slider = Actionable(target, [NSSlider class], @"a slider");
    [slider setIntValue:v];
    SendAction(slider);
    return (id)nil;
  });
}

// For buttons the controller keeps no name for, such as Reset.
static VALUE click_titled(VALUE, VALUE index, VALUE title) {
  long i = NUM2LONG(index);
  const char *text = StringValueCStr(title);
  return Drive([=] {
    NSTabViewItem *item = TabAt(i);
    NSString *wanted = [NSString stringWithUTF8String:text];
    for (NSView *view in [[item view] subviews])
      if ([view isKindOfClass:[NSButton class]] && [[(NSButton *)view title] isEqual:wanted]) {
        NSString *what = [NSString stringWithFormat:@"the button \"%@\"", wanted];
        [Reachable(view, what) performClick:nil];
        return (id)nil;
      }
    Refuse(@"no button titled \"%@\" on tab %ld", wanted, i);
    return (id)nil;
  });
}

// Starts editing the field as a click in it would, with the caret at the end
// or everything selected.
static NSText *EditorFor(VALUE name, BOOL selectAll) {
  NSTextField *field = Actionable(name, [NSTextField class], @"a text field");
  if (![field currentEditor])
    [[field window] makeFirstResponder:field];
  NSText *editor = [field currentEditor];
  if (!editor)
    Refuse(@"%s cannot be edited", RSTRING_PTR(name));
  NSUInteger length = [[editor string] length];
  [editor setSelectedRange:selectAll ? NSMakeRange(0, length) : NSMakeRange(length, 0)];
  return editor;
}

// Types one key at a time, the first over the selection when `replacing`; each
// key finds the field again, as the panel may react to the one before.
static void TypeInto(VALUE name, const char *chars, BOOL replacing) {
  NSString *typed = [NSString stringWithUTF8String:chars];
  if (replacing && [typed length] == 0)
    [EditorFor(name, YES) delete:nil];
  for (NSUInteger i = 0; i < [typed length];) {
    NSRange key = [typed rangeOfComposedCharacterSequenceAtIndex:i];
    [EditorFor(name, replacing && i == 0) insertText:[typed substringWithRange:key]];
    i = NSMaxRange(key);
  }
}

static VALUE Typing(VALUE name, VALUE text, BOOL replacing) {
  const char *chars = StringValueCStr(text);
  VALUE target = Name(name);
  return Drive([=] {
    TypeInto(target, chars, replacing);
    return (id)nil;
  });
}

static VALUE type_text(VALUE, VALUE name, VALUE text) {
  return Typing(name, text, NO);
}

static VALUE replace(VALUE, VALUE name, VALUE text) {
  return Typing(name, text, YES);
}

static VALUE clear(VALUE, VALUE name) {
  VALUE target = Name(name);
  return Drive([=] {
    [EditorFor(target, YES) delete:nil];
    return (id)nil;
  });
}

static VALUE press_return(VALUE, VALUE name) {
  VALUE target = Name(name);
  return Drive([=] {
    [(NSTextView *)EditorFor(target, NO) insertNewline:nil];
    return (id)nil;
  });
}

// A key pressed and released as the toolkit receives it (driver/keys.mm): the
// panel's window hands it to the focused control.
static VALUE key(VALUE, VALUE name) {
  const char *text = StringValueCStr(name);
  return Drive([=] {
    NSWindow *window = PanelWindow();
    NSString *keys = [NSString stringWithUTF8String:text];
    NSEvent *press = keys ? KeyPressFor(keys, window) : nil;
    if (!press)
      Refuse(@"no key %s", text);
    if (![window isVisible])
      Refuse(@"the panel is closed: no key reaches it");
    [window sendEvent:press];
    [window sendEvent:KeyReleaseOf(press)];
    return (id)nil;
  });
}

static VALUE close_box(VALUE) {
  return Drive([] {
    [ShownPanel(@"the close box") performClose:nil];
    return (id)nil;
  });
}

static VALUE choose_tab(VALUE, VALUE index) {
  long i = NUM2LONG(index);
  return Drive([=] {
    ShownPanel(@"tabs");
    [Tabs() selectTabViewItem:TabAt(i)];
    return (id)nil;
  });
}

static VALUE set_raise_observer_errors(VALUE, VALUE on) {
  raisingObserverErrors = RTEST(on);
  return on;
}

static VALUE raise_observer_errors(VALUE) {
  return raisingObserverErrors ? Qtrue : Qfalse;
}

static VALUE process_events(VALUE) {
  return Drive([] {
    [Controller() processEvents];
    return (id)nil;
  });
}

// What a host has done before any plugin runs: the application object exists,
// the panel does not.
static VALUE start_application(VALUE) {
  return Drive([] {
    HostSignalsGuard hostSignals;
    EnsureApplicationObject();
    return (id)nil;
  });
}

// What AppKit does to a panel that hides on deactivation when its application
// goes to the background: off screen, but not closed.
static VALUE hide_as_inactive(VALUE) {
  return Drive([] {
    [PanelWindow() orderOut:nil];
    return (id)nil;
  });
}

// What terminate: does first, without ending the process: the application's
// observers hear that it is terminating.
static VALUE announce_termination(VALUE) {
  return Drive([] {
    [[NSNotificationCenter defaultCenter]
        postNotificationName:NSApplicationWillTerminateNotification
                      object:NSApp];
    return (id)nil;
  });
}

// On screen with every view drawn: what a user sees once showing has finished.
static VALUE drawn(VALUE) {
  return Drive([] {
    NSWindow *window = PanelWindow();
    return (id)Flag([window isVisible] && ![window viewsNeedDisplay]);
  });
}

// Replaces the pending answer: `how` answers the next chooser after `delay`
// seconds of its modal session, `giveUp` aborts it after `limit`.
static void ArmAnswer(const char *path, SEL how, double delay, double limit) {
  [pendingAnswer release];
  pendingAnswer = [[VOPFolderChooserAnswer alloc] init];
  pendingAnswer->folder = path ? [[NSString alloc] initWithUTF8String:path] : nil;
  NSArray *modes = @[ NSModalPanelRunLoopMode ];
  [pendingAnswer performSelector:how withObject:nil afterDelay:delay inModes:modes];
  [pendingAnswer performSelector:@selector(giveUp) withObject:nil afterDelay:limit inModes:modes];
}

// The next folder chooser is answered with the folder (nil cancels); one that
// is not answered within the time limit is aborted, so a test cannot hang on it.
static VALUE answer_folder_chooser(VALUE, VALUE folder, VALUE seconds) {
  const char *path = NIL_P(folder) ? nullptr : StringValueCStr(folder);
  double limit = NUM2DBL(seconds);
  return Drive([=] {
    ArmAnswer(path, @selector(answer), 0.05, limit);
    return (id)nil;
  });
}

// The next folder chooser is cancelled as soon as it is on screen and drawn;
// folder_chooser_shown_at then tells when that was.
static VALUE cancel_folder_chooser_once_shown(VALUE, VALUE seconds) {
  double limit = NUM2DBL(seconds);
  return Drive([=] {
    ArmAnswer(nullptr, @selector(answerOnceShown), 0, limit);
    return (id)nil;
  });
}

// The next folder chooser is closed as soon as it is on screen and drawn, as
// a person closes it through the window manager.
static VALUE close_folder_chooser_once_shown(VALUE, VALUE seconds) {
  double limit = NUM2DBL(seconds);
  return Drive([=] {
    ArmAnswer(nullptr, @selector(answerOnceShown), 0, limit);
    pendingAnswer->closing = YES;
    return (id)nil;
  });
}

// Process.clock_gettime(Process::CLOCK_MONOTONIC, :nanosecond) at that moment, or nil.
static VALUE folder_chooser_shown_at(VALUE) {
  return Drive([] {
    return (id)(pendingAnswer && pendingAnswer->shownAt ? @(pendingAnswer->shownAt) : nil);
  });
}

static VALUE folder_chooser_answered(VALUE) {
  return Drive([] { return (id)Flag(pendingAnswer && pendingAnswer->answered); });
}

// For a plugin's tests: every observer forgotten, the panel closed unheard and
// every control as a new panel has it, so that one test cannot leak into the next.
static VALUE reset(VALUE) {
  auto resetPanel = OPTIONS_PANEL_FIND(OptionsPanel_reset);
  if (!resetPanel)
    rb_raise(rb_eRuntimeError, "the options panel extension is not loaded");
  resetPanel();
  return Qtrue;
}

// ---- reading what the user sees ----

static id TextOf(id view) {
  if ([view isKindOfClass:[NSButton class]])
    return [view title];
  if ([view isKindOfClass:[NSTextField class]])
    return [view stringValue];
  return nil;
}

// The toolkit class a control is, whatever subclass draws it.
static NSString *KindOf(NSView *view) {
  Class cls = [view class];
  while (![NSStringFromClass(cls) hasPrefix:@"NS"] && [cls superclass])
    cls = [cls superclass];
  return NSStringFromClass(cls);
}

// What the user sees of the view, in its superview: a slider's track, a
// separator's line along the middle of its longer side, or the whole frame.
static NSRect DrawnFrame(NSView *view) {
  if ([view respondsToSelector:@selector(trackFrame)])
    return [view trackFrame];
  NSRect frame = [view frame];
  if ([view isKindOfClass:[NSBox class]] && [(NSBox *)view boxType] == NSBoxSeparator) {
    if (NSHeight(frame) > NSWidth(frame))
      return NSMakeRect(floor(NSMidX(frame)), NSMinY(frame), 1, NSHeight(frame));
    return NSMakeRect(NSMinX(frame), floor(NSMidY(frame)), NSWidth(frame), 1);
  }
  return frame;
}

static NSDictionary *Describe(NSView *view) {
  NSMutableDictionary *d = [NSMutableDictionary dictionary];
  [d setObject:KindOf(view) forKey:@"class"];
  [d setObject:RectArray([view frame]) forKey:@"frame"];
  [d setObject:Flag([view window] != nil) forKey:@"in_window"];
  if ([view window])
    [d setObject:RectArray([[view superview] convertRect:DrawnFrame(view) toView:nil])
          forKey:@"drawn_in_window"];
  if (id text = TextOf(view))
    [d setObject:text forKey:@"text"];
  if ([view isKindOfClass:[NSControl class]])
    [d setObject:Flag([(NSControl *)view isEnabled]) forKey:@"enabled"];
  if ([view isKindOfClass:[NSTextField class]]) {
    NSFont *font = [(NSTextField *)view font];
    NSFontTraitMask traits = [[NSFontManager sharedFontManager] traitsOfFont:font];
    [d setObject:Flag((traits & NSBoldFontMask) != 0) forKey:@"bold"];
  }
  if ([view isKindOfClass:[NSMatrix class]]) {
    NSMutableArray *cells = [NSMutableArray array];
    for (NSCell *cell in [(NSMatrix *)view cells])
      [cells addObject:@{
        @"text" : [cell title],
        @"state" : @([cell state]),
        @"enabled" : Flag([cell isEnabled]),
        @"needed_width" : @([cell cellSize].width)
      }];
    [d setObject:cells forKey:@"cells"];
    [d setObject:@([(NSMatrix *)view cellSize].width) forKey:@"cell_width"];
  } else if ([view isKindOfClass:[NSControl class]]) {
    // How wide the control must be to show its whole title or text.
    [d setObject:@([[(NSControl *)view cell] cellSize].width) forKey:@"needed_width"];
  }
  if ([view isKindOfClass:[NSComboBox class]]) {
    NSComboBox *combo = (NSComboBox *)view;
    [d setObject:[combo objectValues] forKey:@"items"];
    [d setObject:@([combo indexOfSelectedItem]) forKey:@"selected"];
    [d setObject:Flag([combo isEditable]) forKey:@"editable"];
  }
  if ([view isKindOfClass:[NSButton class]]) {
    NSButton *button = (NSButton *)view;
    [d setObject:@([button state]) forKey:@"state"];
    // How wide its title is drawn, to tell whether the bezel leaves it room.
    [d setObject:@([[button attributedTitle] size].width) forKey:@"title_width"];
  }
  if ([view isKindOfClass:[NSSlider class]]) {
    NSSlider *slider = (NSSlider *)view;
    [d setObject:@([slider intValue]) forKey:@"value"];
    [d setObject:@([slider minValue]) forKey:@"min"];
    [d setObject:@([slider maxValue]) forKey:@"max"];
  }
  return d;
}

static VALUE control(VALUE, VALUE name) {
  VALUE target = Name(name);
  return Drive([=] { return (id)Describe(Control(target)); });
}

static NSArray *DescribeAll(NSArray *views) {
  NSMutableArray *all = [NSMutableArray array];
  for (NSView *view in views)
    [all addObject:Describe(view)];
  return all;
}

// The views of the window's content area, or of a tab, in stacking order.
static VALUE content_views(VALUE) {
  return Drive([] { return (id)DescribeAll([[PanelWindow() contentView] subviews]); });
}

static VALUE tab_views(VALUE, VALUE index) {
  long i = NUM2LONG(index);
  return Drive([=] { return (id)DescribeAll([[TabAt(i) view] subviews]); });
}

// Where on the tab view's strip the tab is: the rectangle round the points that hit it.
static NSRect TabSpan(NSTabView *tabView, long index) {
  NSTabViewItem *item = TabAt(index);
  NSRect bounds = [tabView bounds];
  NSRect span = NSZeroRect;
  for (CGFloat y = NSMinY(bounds); y < NSMaxY(bounds); y += 2)
    for (CGFloat x = NSMinX(bounds); x < NSMaxX(bounds); x += 2)
      if ([tabView tabViewItemAtPoint:NSMakePoint(x, y)] == item)
        span = NSUnionRect(span, NSMakeRect(x, y, 2, 2));
  if (NSIsEmptyRect(span))
    Refuse(@"tab %ld shows nowhere", index);
  return span;
}

static VALUE tabs(VALUE) {
  return Drive([] {
    NSTabView *tabView = Tabs();
    NSMutableArray *all = [NSMutableArray array];
    for (NSTabViewItem *item in [tabView tabViewItems])
      [all addObject:@{
        @"identifier" : [item identifier],
        @"label" : [item label],
        @"selected" : Flag(item == [tabView selectedTabViewItem]),
        @"frame" : RectArray([[item view] frame]),
        // How wide its label is drawn, and the tab it is drawn on, in window coordinates.
        @"label_width" : @([item sizeOfLabel:NO].width),
        @"drawn_in_window" : RectArray([tabView convertRect:TabSpan(tabView, [all count])
                                                     toView:nil])
      }];
    return (id)all;
  });
}

// The middle of what the user sees of a control, of a cell of a radio group,
// or of a tab's label, in the view's own coordinates.
static NSPoint TargetIn(NSView *view, long index, const char *name) {
  NSRect target = [view bounds];
  if (index >= 0 && [view isKindOfClass:[NSTabView class]]) {
    target = TabSpan((NSTabView *)view, index);
  } else if (index >= 0 && [view isKindOfClass:[NSMatrix class]]) {
    NSMatrix *group = (NSMatrix *)view;
    NSInteger row, column;
    [group getRow:&row column:&column ofCell:CellAt(group, index, name)];
    target = [group cellFrameAtRow:row column:column];
  } else if ([view respondsToSelector:@selector(trackFrame)]) {
    target = [view convertRect:DrawnFrame(view) fromView:[view superview]];
  }
  return NSMakePoint(NSMidX(target), NSMidY(target));
}

// A control by its name, or the title bar's close box, which the controller has no name for.
static NSView *PressableView(const char *name) {
  if (strcmp(name, "close_box") != 0)
    return ControlNamed(name);
  NSButton *closeBox = [PanelWindow() standardWindowButton:NSWindowCloseButton];
  if (!closeBox)
    Refuse(@"the title bar shows no close box");
  return closeBox;
}

// Where a pointer must go to reach the target, in the X server's screen
// coordinates: whole pixels, origin at the top-left corner.
static VALUE screen_point(VALUE, VALUE name, VALUE index) {
  VALUE target = Name(name);
  long i = NIL_P(index) ? -1 : NUM2LONG(index);
  return Drive([=] {
    const char *control = RSTRING_PTR(target);
    NSView *view = PressableView(control);
    NSWindow *window = [view window];
    if (!window)
      Refuse(@"%s is not on the window", control);
    NSPoint inWindow = [view convertPoint:TargetIn(view, i, control) toView:nil];
    NSPoint onScreen = [window convertRectToScreen:NSMakeRect(inWindow.x, inWindow.y, 0, 0)].origin;
    CGFloat screenHeight = NSHeight([[window screen] frame]);
    return (id) @[ @(lround(onScreen.x)), @(lround(screenHeight - onScreen.y)) ];
  });
}

// The readable name of the control that has the keyboard focus; the title of a
// button the controller keeps no name for (Reset); nil when nothing has it.
static id FocusedName() {
  id<VOPController> controller = Controller();
  NSView *focused = [controller focusedControl];
  if (!focused)
    return nil;
  unsigned count = 0;
  Ivar *ivars = class_copyIvarList([(id)controller class], &count);
  id name = nil;
  for (unsigned i = 0; i < count && !name; ++i) {
    const char *type = ivar_getTypeEncoding(ivars[i]);
    const char *readable = ReadableName(ivar_getName(ivars[i]));
    if (readable && type && type[0] == '@' && object_getIvar(controller, ivars[i]) == focused)
      name = [NSString stringWithUTF8String:readable];
  }
  free(ivars);
  if (!name && [focused isKindOfClass:[NSButton class]])
    name = [(NSButton *)focused title];
  return name;
}

static VALUE focused(VALUE) {
  return Drive([] { return FocusedName(); });
}

static VALUE control_names(VALUE) {
  VALUE names = rb_hash_new();
  for (const ControlName &entry : kControlNames)
    rb_hash_aset(names, ID2SYM(rb_intern(entry.readable)), ID2SYM(rb_intern(entry.controller)));
  return names;
}

static VALUE window_state(VALUE) {
  return Drive([] {
    NSWindow *window = PanelWindow();
    return (id) @{
      @"visible" : Flag([window isVisible]),
      @"key" : Flag([window isKeyWindow]),
      @"active" : Flag([NSApp isActive]),
      @"level" : @([window level]),
      @"title" : [window title],
      @"frame" : RectArray([window frame]),
      @"content" : RectArray([[window contentView] frame]),
      @"screen" : RectArray([[window screen] visibleFrame]),
      @"style" : @([window styleMask]),
      @"panel" : Flag([window isKindOfClass:[NSPanel class]])
    };
  });
}

static VALUE built(VALUE) {
  return Drive([] {
    Class<VOPController> cls = ControllerClass();
    return (id)Flag(cls && [cls isBuilt]);
  });
}

// The image file types the process can read: the host's, whatever the panel
// does to find its own images faster.
static VALUE image_types(VALUE) {
  return Drive([] { return (id)ReadableImageTypes(); });
}

// How many timers each mode of the main run loop holds, invalidated ones
// included until the mode runs again and drops them. GNUstep has no public way
// to ask: this reads its run loop's per-mode contexts and their timer arrays.
static NSDictionary *TimersByMode() {
  NSMutableDictionary *counts = [NSMutableDictionary dictionary];
#ifdef GNUSTEP
  NSRunLoop *loop = [NSRunLoop currentRunLoop];
  Ivar contexts = class_getInstanceVariable([NSRunLoop class], "_contextMap");
  NSMapTable *map = (NSMapTable *)object_getIvar(loop, contexts);
  for (id context in NSAllMapTableValues(map)) {
    Ivar mode = class_getInstanceVariable([context class], "mode");
    Ivar timers = class_getInstanceVariable([context class], "timers");
    if (!mode || !timers)
      continue;
    // A GSIArray: a pointer to its items, then its count.
    struct Timers {
      void *items;
      unsigned count;
    };
    Timers *array =
        *reinterpret_cast<Timers **>(reinterpret_cast<char *>(context) + ivar_getOffset(timers));
    [counts setObject:@(array ? array->count : 0) forKey:object_getIvar(context, mode)];
  }
#endif
  return counts;
}

static VALUE run_loop_timers(VALUE) {
  return Drive([] { return (id)TimersByMode(); });
}

static VALUE modal_panel_level(VALUE) {
  return Drive([] { return (id) @(NSModalPanelWindowLevel); });
}

static NSNumber *SavePicture(NSView *view, const char *file) {
  [PanelWindow() display];
  NSBitmapImageRep *image = [view bitmapImageRepForCachingDisplayInRect:[view bounds]];
  [view cacheDisplayInRect:[view bounds] toBitmapImageRep:image];
  NSData *png = [image representationUsingType:NSBitmapImageFileTypePNG properties:@{}];
  NSString *path = [NSString stringWithUTF8String:file];
  BOOL isFolder = NO;
  // Checked first: the toolkit prints a line of its own when it cannot write.
  if (![[NSFileManager defaultManager] fileExistsAtPath:[path stringByDeletingLastPathComponent]
                                            isDirectory:&isFolder] ||
      !isFolder || ![png writeToFile:path atomically:YES])
    Refuse(@"cannot write the screenshot to %@", path);
  return Flag(YES);
}

static VALUE screenshot(VALUE, VALUE path) {
  const char *file = StringValueCStr(path);
  return Drive([=] { return (id)SavePicture([PanelWindow() contentView], file); });
}

// With the title bar, where GNUstep draws it itself (GSBackHandlesWindowDecorations
// NO); otherwise the same as screenshot.
static VALUE screenshot_window(VALUE, VALUE path) {
  const char *file = StringValueCStr(path);
  return Drive([=] {
    NSView *content = [PanelWindow() contentView];
    return (id)SavePicture([content superview] ?: content, file);
  });
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
#define DRIVER_FUNCTION(function)                                                                  \
  RUBY_METHOD_FUNC((velmar::Guarded<decltype(&function),                                           \
                                    &MainThreadOnly<decltype(&function), &function>::call>::call))

// Every function is guarded: a C++ exception becomes a Ruby one on the way out.
// The function itself, not the macro that newer Rubies put in its place for C++.
static void define(VALUE module, const char *name, VALUE (*function)(ANYARGS), int arity) {
  (rb_define_module_function)(module, name, function, arity);
}

extern "C" __attribute__((visibility("default"))) void Init_OptionsPanelDriver() {
  VALUE driver = rb_define_module("OptionsPanelDriver");
  if (!velmar::claim_first_copy(driver, reinterpret_cast<const void *>(&Init_OptionsPanelDriver)))
    return;
  define(driver, "click", DRIVER_FUNCTION(click), 1);
  define(driver, "press", DRIVER_FUNCTION(press), 1);
  define(driver, "click_later", DRIVER_FUNCTION(click_later), 2);
  define(driver, "click_cell", DRIVER_FUNCTION(click_cell), 2);
  define(driver, "pick", DRIVER_FUNCTION(pick), 2);
  define(driver, "click_titled", DRIVER_FUNCTION(click_titled), 2);
  define(driver, "slide", DRIVER_FUNCTION(slide), 2);
  define(driver, "type", DRIVER_FUNCTION(type_text), 2);
  define(driver, "replace", DRIVER_FUNCTION(replace), 2);
  define(driver, "clear", DRIVER_FUNCTION(clear), 1);
  define(driver, "press_return", DRIVER_FUNCTION(press_return), 1);
  define(driver, "key", DRIVER_FUNCTION(key), 1);
  define(driver, "close_box", DRIVER_FUNCTION(close_box), 0);
  define(driver, "choose_tab", DRIVER_FUNCTION(choose_tab), 1);
  define(driver, "process_events", DRIVER_FUNCTION(process_events), 0);
  define(driver, "raise_observer_errors=", DRIVER_FUNCTION(set_raise_observer_errors), 1);
  define(driver, "raise_observer_errors?", DRIVER_FUNCTION(raise_observer_errors), 0);
  define(driver, "start_application", DRIVER_FUNCTION(start_application), 0);
  define(driver, "hide_as_inactive", DRIVER_FUNCTION(hide_as_inactive), 0);
  define(driver, "announce_termination", DRIVER_FUNCTION(announce_termination), 0);
  define(driver, "drawn?", DRIVER_FUNCTION(drawn), 0);
  define(driver, "answer_folder_chooser", DRIVER_FUNCTION(answer_folder_chooser), 2);
  define(driver, "folder_chooser_answered?", DRIVER_FUNCTION(folder_chooser_answered), 0);
  define(driver, "cancel_folder_chooser_once_shown",
         DRIVER_FUNCTION(cancel_folder_chooser_once_shown), 1);
  define(driver, "close_folder_chooser_once_shown",
         DRIVER_FUNCTION(close_folder_chooser_once_shown), 1);
  define(driver, "folder_chooser_shown_at", DRIVER_FUNCTION(folder_chooser_shown_at), 0);
  define(driver, "control", DRIVER_FUNCTION(control), 1);
  define(driver, "control_names", DRIVER_FUNCTION(control_names), 0);
  define(driver, "run_loop_timers", DRIVER_FUNCTION(run_loop_timers), 0);
  define(driver, "screen_point", DRIVER_FUNCTION(screen_point), 2);
  define(driver, "content_views", DRIVER_FUNCTION(content_views), 0);
  define(driver, "tab_views", DRIVER_FUNCTION(tab_views), 1);
  define(driver, "tabs", DRIVER_FUNCTION(tabs), 0);
  define(driver, "window_state", DRIVER_FUNCTION(window_state), 0);
  define(driver, "focused", DRIVER_FUNCTION(focused), 0);
  define(driver, "built?", DRIVER_FUNCTION(built), 0);
  define(driver, "modal_panel_level", DRIVER_FUNCTION(modal_panel_level), 0);
  define(driver, "image_types", DRIVER_FUNCTION(image_types), 0);
  define(driver, "screenshot", DRIVER_FUNCTION(screenshot), 1);
  define(driver, "screenshot_window", DRIVER_FUNCTION(screenshot_window), 1);
  define(driver, "reset", DRIVER_FUNCTION(reset), 0);
}
