// Acts as the user on the options panel through the toolkit's own paths, and
// reads back what the user sees. Controls are reached by their names in the
// controller, so the panel itself carries no test hooks.
#import <AppKit/AppKit.h>

#include <ruby.h>
#include <objc/runtime.h>

#import "platform/platform.h"

@interface NSObject (OptionsPanelController)
+ (BOOL)isBuilt;
+ (id)sharedController;
- (void)processEvents;
@end

// A slider that draws, and takes presses, on a track narrower than its frame.
@interface NSView (Track)
- (NSRect)trackFrame;
@end

// Answers the modal folder chooser from inside its session.
@interface FolderChooserAnswer : NSObject {
@public
  NSString *folder; // nil: cancel
  BOOL answered;
}
- (void)answer;
- (void)giveUp;
@end

@implementation FolderChooserAnswer
- (void)answer {
  answered = YES;
  NSOpenPanel *chooser = [NSOpenPanel openPanel];
  if (folder) {
    [chooser setDirectory:folder];
    [chooser ok:nil];
  } else {
    [chooser cancel:nil];
  }
}
- (void)giveUp {
  if (!answered)
    [NSApp abortModal];
}
@end

static FolderChooserAnswer *pendingAnswer = nil;

static id Controller() {
  Class cls = NSClassFromString(@"OptionsPanel");
  if (!cls || ![cls isBuilt])
    [NSException raise:@"PanelNotBuilt" format:@"the options panel has not been built"];
  return [cls sharedController];
}

static id Control(NSString *name) {
  id controller = Controller();
  Ivar ivar = class_getInstanceVariable([controller class], [name UTF8String]);
  if (!ivar)
    [NSException raise:@"UnknownControl" format:@"no control named %@", name];
  return object_getIvar(controller, ivar);
}

static NSWindow *PanelWindow() {
  return [Controller() window];
}

static NSNumber *Flag(BOOL value) {
  return [NSNumber numberWithBool:value];
}

static NSArray *Rect(NSRect r) {
  return @[ @(r.origin.x), @(r.origin.y), @(r.size.width), @(r.size.height) ];
}

static VALUE ToRuby(id object) {
  if (!object || object == [NSNull null])
    return Qnil;
  if ([object isKindOfClass:[NSString class]])
    return rb_utf8_str_new_cstr([object UTF8String]);
  if ([object isKindOfClass:[NSNumber class]]) {
    const char *type = [object objCType];
    if (strcmp(type, @encode(BOOL)) == 0)
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
// RuntimeError, raised only after the pool and the @try frame are gone.
template <typename Step> static VALUE Drive(Step step) {
  id result = nil;
  NSString *failure = nil;
  NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
  @try {
    result = [step() retain];
  } @catch (NSException *exception) {
    failure = [[NSString alloc] initWithFormat:@"%@: %@", [exception name], [exception reason]];
  }
  // UTF8String autoreleases the bytes it returns: the message is read while the
  // pool is still there, or GNUstep leaks them with a warning at every failure.
  VALUE message = Qnil;
  if (failure) {
    message = rb_utf8_str_new_cstr([failure UTF8String]);
    [failure release];
  }
  [pool drain];
  if (!NIL_P(message))
    rb_exc_raise(rb_exc_new_str(rb_eRuntimeError, message));
  // Reading an object's text autoreleases too.
  pool = [[NSAutoreleasePool alloc] init];
  VALUE value = ToRuby(result);
  [result release];
  [pool drain];
  return value;
}

static NSString *Name(VALUE name) {
  return [NSString stringWithUTF8String:rb_id2name(rb_sym2id(rb_to_symbol(name)))];
}

// ---- acting as the user ----

static id RequireEnabled(NSControl *control) {
  if (![control isEnabled])
    [NSException raise:@"ControlDisabled" format:@"%@ is disabled", control];
  return control;
}

static VALUE click(VALUE, VALUE name) {
  return Drive([=] {
    [RequireEnabled(Control(Name(name))) performClick:nil];
    return (id)nil;
  });
}

// What a button does once the user's click completes: its action, sent as
// the toolkit sends it. performClick: also flashes the button for a tenth of a
// second first, which is longer than anything the panel does.
static VALUE press(VALUE, VALUE name) {
  return Drive([=] {
    NSControl *control = RequireEnabled(Control(Name(name)));
    [control sendAction:[control action] to:[control target]];
    return (id)nil;
  });
}

static VALUE click_cell(VALUE, VALUE name, VALUE index) {
  long i = NUM2LONG(index);
  return Drive([=] {
    NSMatrix *group = RequireEnabled(Control(Name(name)));
    BOOL column = [group numberOfRows] == 1;
    [group selectCellAtRow:column ? 0 : i column:column ? i : 0];
    [group sendAction];
    return (id)nil;
  });
}

static VALUE pick(VALUE, VALUE name, VALUE index) {
  long i = NUM2LONG(index);
  return Drive([=] {
    NSComboBox *combo = RequireEnabled(Control(Name(name)));
    [combo selectItemAtIndex:i];
    if ([combo action])
      [combo sendAction:[combo action] to:[combo target]];
    return (id)nil;
  });
}

// For buttons the controller keeps no name for, such as Reset.
static VALUE click_titled(VALUE, VALUE index, VALUE title) {
  long i = NUM2LONG(index);
  const char *text = StringValueCStr(title);
  return Drive([=] {
    NSTabViewItem *item = [(NSTabView *)Control(@"myTabView") tabViewItemAtIndex:i];
    NSString *wanted = [NSString stringWithUTF8String:text];
    for (NSView *view in [[item view] subviews])
      if ([view isKindOfClass:[NSButton class]] && [[(NSButton *)view title] isEqual:wanted]) {
        [RequireEnabled((NSButton *)view) performClick:nil];
        return (id)nil;
      }
    [NSException raise:@"UnknownControl" format:@"no button titled %@ in tab %ld", wanted, i];
    return (id)nil;
  });
}

// Starts editing the field as a click in it would, with the caret at the end.
static NSText *EditorFor(NSTextField *field, BOOL selectAll) {
  NSWindow *window = [field window];
  if (![field currentEditor])
    [window makeFirstResponder:RequireEnabled(field)];
  NSText *editor = [field currentEditor];
  if (!editor)
    [NSException raise:@"NotEditable" format:@"%@ cannot be edited", field];
  NSUInteger length = [[editor string] length];
  [editor setSelectedRange:selectAll ? NSMakeRange(0, length) : NSMakeRange(length, 0)];
  return editor;
}

static VALUE type_text(VALUE, VALUE name, VALUE text) {
  const char *chars = StringValueCStr(text);
  return Drive([=] {
    NSTextField *field = Control(Name(name));
    NSString *typed = [NSString stringWithUTF8String:chars];
    for (NSUInteger i = 0; i < [typed length];) {
      NSRange key = [typed rangeOfComposedCharacterSequenceAtIndex:i];
      [EditorFor(field, NO) insertText:[typed substringWithRange:key]];
      i = NSMaxRange(key);
    }
    return (id)nil;
  });
}

static VALUE clear(VALUE, VALUE name) {
  return Drive([=] {
    NSText *editor = EditorFor(Control(Name(name)), YES);
    [editor delete:nil];
    return (id)nil;
  });
}

static VALUE press_return(VALUE, VALUE name) {
  return Drive([=] {
    [(NSTextView *)EditorFor(Control(Name(name)), NO) insertNewline:nil];
    return (id)nil;
  });
}

static VALUE close_box(VALUE) {
  return Drive([] {
    [PanelWindow() performClose:nil];
    return (id)nil;
  });
}

static VALUE choose_tab(VALUE, VALUE index) {
  long i = NUM2LONG(index);
  return Drive([=] {
    [(NSTabView *)Control(@"myTabView") selectTabViewItemAtIndex:i];
    return (id)nil;
  });
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

// On screen with every view drawn: what a user sees once showing has finished.
static VALUE drawn(VALUE) {
  return Drive([] {
    NSWindow *window = PanelWindow();
    return (id)Flag([window isVisible] && ![window viewsNeedDisplay]);
  });
}

// The next folder chooser is answered with the folder (nil cancels); one that
// is not answered within the time limit is aborted, so a test cannot hang on it.
static VALUE answer_folder_chooser(VALUE, VALUE folder, VALUE seconds) {
  const char *path = NIL_P(folder) ? nullptr : StringValueCStr(folder);
  double limit = NUM2DBL(seconds);
  return Drive([=] {
    [pendingAnswer release];
    pendingAnswer = [[FolderChooserAnswer alloc] init];
    pendingAnswer->folder = path ? [[NSString alloc] initWithUTF8String:path] : nil;
    NSArray *modes = @[ NSModalPanelRunLoopMode ];
    [pendingAnswer performSelector:@selector(answer) withObject:nil afterDelay:0.05 inModes:modes];
    [pendingAnswer performSelector:@selector(giveUp) withObject:nil afterDelay:limit inModes:modes];
    return (id)nil;
  });
}

static VALUE folder_chooser_answered(VALUE) {
  return Drive([] { return (id)Flag(pendingAnswer && pendingAnswer->answered); });
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
  [d setObject:Rect([view frame]) forKey:@"frame"];
  [d setObject:Flag([view window] != nil) forKey:@"in_window"];
  if ([view window])
    [d setObject:Rect([[view superview] convertRect:DrawnFrame(view) toView:nil])
          forKey:@"drawn_in_window"];
  if (id text = TextOf(view))
    [d setObject:text forKey:@"text"];
  if ([view isKindOfClass:[NSControl class]])
    [d setObject:Flag([(NSControl *)view isEnabled]) forKey:@"enabled"];
  if ([view isKindOfClass:[NSMatrix class]]) {
    NSMutableArray *cells = [NSMutableArray array];
    for (NSCell *cell in [(NSMatrix *)view cells])
      [cells addObject:@{
        @"text" : [cell title],
        @"state" : @([cell state]),
        @"enabled" : Flag([cell isEnabled])
      }];
    [d setObject:cells forKey:@"cells"];
  }
  if ([view isKindOfClass:[NSComboBox class]]) {
    NSComboBox *combo = (NSComboBox *)view;
    [d setObject:[combo objectValues] forKey:@"items"];
    [d setObject:@([combo indexOfSelectedItem]) forKey:@"selected"];
    [d setObject:Flag([combo isEditable]) forKey:@"editable"];
  }
  if ([view isKindOfClass:[NSButton class]])
    [d setObject:@([(NSButton *)view state]) forKey:@"state"];
  if ([view isKindOfClass:[NSSlider class]]) {
    NSSlider *slider = (NSSlider *)view;
    [d setObject:@([slider intValue]) forKey:@"value"];
    [d setObject:@([slider minValue]) forKey:@"min"];
    [d setObject:@([slider maxValue]) forKey:@"max"];
  }
  return d;
}

static VALUE control(VALUE, VALUE name) {
  return Drive([=] { return (id)Describe(Control(Name(name))); });
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
  return Drive([=] {
    NSTabViewItem *item = [(NSTabView *)Control(@"myTabView") tabViewItemAtIndex:i];
    return (id)DescribeAll([[item view] subviews]);
  });
}

static VALUE tabs(VALUE) {
  return Drive([] {
    NSTabView *tabView = Control(@"myTabView");
    NSMutableArray *all = [NSMutableArray array];
    for (NSTabViewItem *item in [tabView tabViewItems])
      [all addObject:@{
        @"identifier" : [item identifier],
        @"label" : [item label],
        @"selected" : Flag(item == [tabView selectedTabViewItem]),
        @"frame" : Rect([[item view] frame])
      }];
    return (id)all;
  });
}

// Where on the tab view's strip the tab is: the middle of the points that hit it.
static NSPoint TabCentre(NSTabView *tabView, long index) {
  NSTabViewItem *item = [tabView tabViewItemAtIndex:index];
  NSRect bounds = [tabView bounds];
  CGFloat sumX = 0, sumY = 0, hits = 0;
  for (CGFloat y = NSMinY(bounds); y < NSMaxY(bounds); y += 2)
    for (CGFloat x = NSMinX(bounds); x < NSMaxX(bounds); x += 2)
      if ([tabView tabViewItemAtPoint:NSMakePoint(x, y)] == item) {
        sumX += x;
        sumY += y;
        ++hits;
      }
  if (!hits)
    [NSException raise:@"NoTab" format:@"tab %ld shows nowhere", index];
  return NSMakePoint(sumX / hits, sumY / hits);
}

// The middle of what the user sees of a control, of a cell of a radio group,
// or of a tab's label, in the view's own coordinates.
static NSPoint TargetIn(NSView *view, long index) {
  if (index >= 0 && [view isKindOfClass:[NSTabView class]])
    return TabCentre((NSTabView *)view, index);
  NSRect target = [view bounds];
  if (index >= 0 && [view isKindOfClass:[NSMatrix class]]) {
    NSMatrix *group = (NSMatrix *)view;
    target = [group cellFrameAtRow:index / [group numberOfColumns]
                            column:index % [group numberOfColumns]];
  } else if ([view respondsToSelector:@selector(trackFrame)]) {
    target = [view convertRect:DrawnFrame(view) fromView:[view superview]];
  }
  return NSMakePoint(NSMidX(target), NSMidY(target));
}

// Where a pointer must go to reach the target, in the X server's screen
// coordinates: whole pixels, origin at the top-left corner.
// A control by its name, or the title bar's close box, which the controller has no name for.
static NSView *PressableView(NSString *name) {
  if (![name isEqual:@"close_box"])
    return Control(name);
  NSButton *closeBox = [PanelWindow() standardWindowButton:NSWindowCloseButton];
  if (!closeBox)
    [NSException raise:@"NoCloseBox" format:@"the title bar shows no close box"];
  return closeBox;
}

static VALUE screen_point(VALUE, VALUE name, VALUE index) {
  const char *control = rb_id2name(rb_sym2id(rb_to_symbol(name)));
  long i = NIL_P(index) ? -1 : NUM2LONG(index);
  return Drive([=] {
    NSView *view = PressableView([NSString stringWithUTF8String:control]);
    NSWindow *window = [view window];
    if (!window)
      [NSException raise:@"NotShowing" format:@"%s is not on the window", control];
    NSPoint inWindow = [view convertPoint:TargetIn(view, i) toView:nil];
    NSPoint onScreen = [window convertRectToScreen:NSMakeRect(inWindow.x, inWindow.y, 0, 0)].origin;
    CGFloat screenHeight = NSHeight([[window screen] frame]);
    return (id) @[ @(lround(onScreen.x)), @(lround(screenHeight - onScreen.y)) ];
  });
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
      @"frame" : Rect([window frame]),
      @"content" : Rect([[window contentView] frame]),
      @"style" : @([window styleMask]),
      @"panel" : Flag([window isKindOfClass:[NSPanel class]])
    };
  });
}

static VALUE built(VALUE) {
  return Drive([] {
    Class cls = NSClassFromString(@"OptionsPanel");
    return (id)Flag(cls && [cls isBuilt]);
  });
}

// The image file types the process can read: the host's, whatever the panel
// does to find its own images faster.
static VALUE image_types(VALUE) {
  return Drive([] { return (id)[NSImage imageFileTypes]; });
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
  [view lockFocus];
  NSBitmapImageRep *image =
      [[[NSBitmapImageRep alloc] initWithFocusedViewRect:[view bounds]] autorelease];
  [view unlockFocus];
  NSData *png = [image representationUsingType:NSPNGFileType properties:@{}];
  return Flag([png writeToFile:[NSString stringWithUTF8String:file] atomically:YES]);
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

extern "C" __attribute__((visibility("default"))) void Init_OptionsPanelDriver() {
  VALUE driver = rb_define_module("OptionsPanelDriver");
  rb_define_module_function(driver, "click", click, 1);
  rb_define_module_function(driver, "press", press, 1);
  rb_define_module_function(driver, "click_cell", click_cell, 2);
  rb_define_module_function(driver, "pick", pick, 2);
  rb_define_module_function(driver, "click_titled", click_titled, 2);
  rb_define_module_function(driver, "type", type_text, 2);
  rb_define_module_function(driver, "clear", clear, 1);
  rb_define_module_function(driver, "press_return", press_return, 1);
  rb_define_module_function(driver, "close_box", close_box, 0);
  rb_define_module_function(driver, "choose_tab", choose_tab, 1);
  rb_define_module_function(driver, "process_events", process_events, 0);
  rb_define_module_function(driver, "start_application", start_application, 0);
  rb_define_module_function(driver, "drawn?", drawn, 0);
  rb_define_module_function(driver, "answer_folder_chooser", answer_folder_chooser, 2);
  rb_define_module_function(driver, "folder_chooser_answered?", folder_chooser_answered, 0);
  rb_define_module_function(driver, "control", control, 1);
  rb_define_module_function(driver, "run_loop_timers", run_loop_timers, 0);
  rb_define_module_function(driver, "screen_point", screen_point, 2);
  rb_define_module_function(driver, "content_views", content_views, 0);
  rb_define_module_function(driver, "tab_views", tab_views, 1);
  rb_define_module_function(driver, "tabs", tabs, 0);
  rb_define_module_function(driver, "window_state", window_state, 0);
  rb_define_module_function(driver, "built?", built, 0);
  rb_define_module_function(driver, "modal_panel_level", modal_panel_level, 0);
  rb_define_module_function(driver, "image_types", image_types, 0);
  rb_define_module_function(driver, "screenshot", screenshot, 1);
  rb_define_module_function(driver, "screenshot_window", screenshot_window, 1);
}
