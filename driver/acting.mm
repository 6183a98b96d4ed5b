// Acting as the user: each function does what a person's click, pick, drag
// or typing does, through the toolkit's own paths, and is refused for what a
// person could not reach.
#import "driver/find.h"
#import "driver/functions.h"
#import "driver/keys.h"

namespace driver {

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

static const Function kActingFunctions[] = {
    {"click", DRIVER_FUNCTION(click), 1},
    {"press", DRIVER_FUNCTION(press), 1},
    {"click_later", DRIVER_FUNCTION(click_later), 2},
    {"click_cell", DRIVER_FUNCTION(click_cell), 2},
    {"pick", DRIVER_FUNCTION(pick), 2},
    {"click_titled", DRIVER_FUNCTION(click_titled), 2},
    {"slide", DRIVER_FUNCTION(slide), 2},
    {"type", DRIVER_FUNCTION(type_text), 2},
    {"replace", DRIVER_FUNCTION(replace), 2},
    {"clear", DRIVER_FUNCTION(clear), 1},
    {"press_return", DRIVER_FUNCTION(press_return), 1},
    {"key", DRIVER_FUNCTION(key), 1},
    {"close_box", DRIVER_FUNCTION(close_box), 0},
    {"choose_tab", DRIVER_FUNCTION(choose_tab), 1},
};
const FunctionGroup kActing = Group(kActingFunctions);

} // namespace driver
