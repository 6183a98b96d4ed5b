// Reading what the user sees: each control's kind, frame, text, state and
// whether it is enabled, the tabs, where a pointer must go, and the focus.
#import "driver/find.h"
#import "driver/functions.h"

#include "driver/control_names.h"

#include <objc/runtime.h>

#include <cmath>

// A slider that draws, and takes presses, on a track narrower than its frame.
@interface NSView (Track)
- (NSRect)trackFrame;
@end

namespace driver {

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
  // The items a right click offers, where the panel gives the control a menu.
  if (NSMenu *menu = [view menu])
    [d setObject:[[menu itemArray] valueForKey:@"title"] forKey:@"menu"];
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

static const Function kReadingFunctions[] = {
    {"control", DRIVER_FUNCTION(control), 1},
    {"control_names", DRIVER_FUNCTION(control_names), 0},
    {"screen_point", DRIVER_FUNCTION(screen_point), 2},
    {"content_views", DRIVER_FUNCTION(content_views), 0},
    {"tab_views", DRIVER_FUNCTION(tab_views), 1},
    {"tabs", DRIVER_FUNCTION(tabs), 0},
    {"focused", DRIVER_FUNCTION(focused), 0},
};
const FunctionGroup kReading = Group(kReadingFunctions);

} // namespace driver
