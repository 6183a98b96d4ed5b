#import "panel/controls.h"

#import "panel/OptionsPanel.h"
#import "platform/platform.h"

// A rectangle of the given height, centred across the frame's height, on whole points.
static NSRect CentredRect(NSRect frame, CGFloat height) {
  if (height >= NSHeight(frame))
    return frame;
  frame.origin.y += ceil((NSHeight(frame) - height) / 2);
  frame.size.height = height;
  return frame;
}

// A slider draws its bar at its natural height, centred in a taller frame.
@interface VOPCentredSliderCell : NSSliderCell
@end

@implementation VOPCentredSliderCell
- (void)drawWithFrame:(NSRect)frame inView:(NSView *)view {
  NSRect bar = CentredRect(frame, NaturalSliderHeight(self));
  [super drawWithFrame:bar inView:view];
  DrawMissingSliderFocusRing(bar, view);
}
@end

@implementation VOPTrackSlider
+ (Class)cellClass {
  return [VOPCentredSliderCell class];
}

#ifdef GNUSTEP
// GNUstep's slider does not redraw when the focus comes or goes, so the ring
// that its cell draws for the focus would neither show nor go.
- (BOOL)becomeFirstResponder {
  [self setNeedsDisplay:YES];
  return [super becomeFirstResponder];
}

- (BOOL)resignFirstResponder {
  [self setNeedsDisplay:YES];
  return [super resignFirstResponder];
}
#endif

- (NSRect)trackFrame {
  return CentredRect([self frame], NaturalSliderHeight([self cell]));
}

// The two sliders' frames overlap: the empty part of one frame must leave a
// press to the track of the other beneath it.
- (NSView *)hitTest:(NSPoint)point {
  if (!NSPointInRect(point, [self trackFrame]))
    return nil;
  return [super hitTest:point];
}
@end

// A push button draws its bezel at its natural height, centred in a taller
// frame, rather than as a pill or circle as tall as the frame.
@interface VOPCentredButtonCell : NSButtonCell
@end

@implementation VOPCentredButtonCell
- (void)drawWithFrame:(NSRect)frame inView:(NSView *)view {
  [super drawWithFrame:CentredRect(frame, [self cellSize].height) inView:view];
}
@end

@interface VOPPushButton : NSButton
@end

@implementation VOPPushButton
+ (Class)cellClass {
  return [VOPCentredButtonCell class];
}
@end

// GNUstep's button takes Space (performClick:) by drawing its cell straight
// onto the window, lit and then unlit, over the last drawing and without what
// lies beneath: a tick going off stays drawn, and the title is drawn over
// itself, darker each time. The box's cell instead has its view redrawn, which
// draws the background beneath it first.
@interface VOPCheckBoxCell : NSButtonCell
@end

@implementation VOPCheckBoxCell
#ifdef GNUSTEP
- (void)highlight:(BOOL)flag withFrame:(NSRect)frame inView:(NSView *)view {
  [self setHighlighted:flag];
  [view setNeedsDisplayInRect:frame];
}
#endif
@end

@interface VOPCheckBox : NSButton
@end

@implementation VOPCheckBox
+ (Class)cellClass {
  return [VOPCheckBoxCell class];
}
@end

static NSString *Decoded(const char *bytes, size_t length) {
  // Every script call with a text comes here; the class is looked up by name
  // only once rather than at each message to it.
  static Class stringClass = [NSString class];
  NSString *s = [[stringClass alloc] initWithBytes:bytes
                                            length:length
                                          encoding:NSUTF8StringEncoding];
  return [s autorelease];
}

NSString *NSStringFromUtf8(const std::string &text) {
  // GNUstep drops U+FEFF characters at the start of the text it decodes, as
  // if they were byte order marks; behind a byte of our own they stay part of
  // the text, as the script gave it. Only such a text takes the detour.
  static const std::string byteOrderMark = "\xEF\xBB\xBF";
  NSString *s;
  if (text.compare(0, byteOrderMark.size(), byteOrderMark) != 0)
    s = Decoded(text.data(), text.size());
  else
    s = [Decoded(("." + text).data(), text.size() + 1) substringFromIndex:1];
  return s ? s : @"";
}

std::string Utf8FromNSString(NSString *text) {
  const char *bytes = [text UTF8String];
  return bytes ? std::string(bytes) : std::string();
}

NSTextField *MakeLabel(NSRect frame, NSString *text, NSFont *font) {
  NSTextField *label = [[[NSTextField alloc] initWithFrame:frame] autorelease];
  [label setStringValue:text];
  [label setBezeled:NO];
  [label setDrawsBackground:NO];
  [label setEditable:NO];
  [label setSelectable:NO];
  if (font)
    [label setFont:font];
  [label sizeToFit];
  return label;
}

static void SetButtonLook(NSButton *button, NSString *title) {
  [button setTitle:title];
  [button setBezelStyle:NSBezelStyleRounded];
  [button setBordered:YES];
  [button setAlignment:NSTextAlignmentCenter];
}

NSButton *MakePushButton(NSRect frame, NSString *title, id target, SEL action, BOOL fitted) {
  NSButton *button = [[[VOPPushButton alloc] initWithFrame:frame] autorelease];
  SetButtonLook(button, title);
  [button setTarget:target];
  [button setAction:action];
  if (fitted)
    [button sizeToFit];
  return button;
}

NSButton *MakeCheckBox(NSRect frame, NSString *title, id target) {
  NSButton *box = [[[VOPCheckBox alloc] initWithFrame:frame] autorelease];
  SetButtonLook(box, title);
  [box sizeToFit];
  [box setTarget:target];
  [box setButtonType:NSButtonTypeSwitch];
  return box;
}

// A field made in code wraps a long text onto lines it has no room for, on
// AppKit as on GNUstep, and shows only the last fragment; on GNUstep a wrapped
// megabyte also runs past the room its field editor gives a text, and the
// toolkit complains "can't find text container for glyph" at each edit. Told
// not to wrap, it scrolls to the caret on one line. Single-line mode is left
// off: GNUstep's drops line-break characters (U+0085) from the text itself.
NSTextField *MakeTextField(NSRect frame) {
  NSTextField *field = [[[VOPTextField alloc] initWithFrame:frame] autorelease];
  NSTextFieldCell *cell = [field cell];
  [cell setWraps:NO];
  [cell setScrollable:YES];
  [cell setLineBreakMode:NSLineBreakByClipping];
  return field;
}

NSComboBox *MakeComboBox(NSRect frame) {
  NSComboBox *combo = [[[VOPComboBox alloc] initWithFrame:frame] autorelease];
  [combo setEditable:NO];
  return combo;
}

NSBox *MakeSeparator(NSRect frame) {
  NSBox *box = [[[NSBox alloc] initWithFrame:frame] autorelease];
  [box setBoxType:NSBoxSeparator];
  return box;
}

NSSlider *MakeSlider(NSRect frame) {
  NSSlider *slider = [[[VOPTrackSlider alloc] initWithFrame:frame] autorelease];
  [slider setMinValue:0.0];
  [slider setMaxValue:100.0];
  [slider setIntValue:kSliderStart];
  return slider;
}

NSView *MakeContainer(NSRect frame, NSArray *subviews) {
  NSView *view = [[[NSView alloc] initWithFrame:frame] autorelease];
  for (NSView *subview in subviews)
    [view addSubview:subview];
  return view;
}

NSMatrix *MakeRadioGroup(NSRect frame, int rows, int columns, NSArray *titles,
                         const RadioGeometry *geometry, id target, SEL action) {
  NSButtonCell *prototype = [[[VOPRadioButtonCell alloc] init] autorelease];
  [prototype setButtonType:NSButtonTypeRadio];
  NSMatrix *group = [[[NSMatrix alloc] initWithFrame:frame
                                                mode:NSRadioModeMatrix
                                           prototype:prototype
                                        numberOfRows:rows
                                     numberOfColumns:columns] autorelease];
  [group setAllowsEmptySelection:NO];
  if (geometry) {
    [group setIntercellSpacing:geometry->spacing];
    [group setCellSize:geometry->cellSize];
  }
  [group sizeToCells];
  [group setAutoresizingMask:NSViewMaxXMargin | NSViewMinYMargin];
  NSArray *cells = [group cells];
  for (NSUInteger i = 0; i < [titles count]; ++i)
    [[cells objectAtIndex:i] setTitle:[titles objectAtIndex:i]];
  if (!geometry) {
    static const CGFloat kGapBeforeButton = 8;
    NSSize size = WidestCellSize(group);
    [group setCellSize:NSMakeSize(size.width + kGapBeforeButton, size.height)];
    [group sizeToCells];
  }
  if (target) {
    [group setTarget:target];
    [group setAction:action];
  }
  return group;
}

long OnCellIndex(NSMatrix *group) {
  NSArray *cells = [group cells];
  for (NSUInteger i = 0; i < [cells count]; ++i)
    if ([[cells objectAtIndex:i] state] == NSControlStateValueOn)
      return (long)i;
  return -1;
}

void SelectCell(NSMatrix *group, long index) {
  NSInteger columns = [group numberOfColumns];
  [group setState:NSControlStateValueOn atRow:index / columns column:index % columns];
}

static void ShowComboItem(NSComboBox *combo, NSInteger index) {
  // Our combo boxes cannot be edited, so there is no edit for the control to
  // end first: the cell takes the item itself (a string) and redraws the box once.
  [[combo cell] setObjectValue:index >= 0 ? [combo itemObjectValueAtIndex:index] : @""];
}

void ShowComboSelection(NSComboBox *combo) {
  ShowComboItem(combo, [combo indexOfSelectedItem]);
}

void SelectComboIndex(NSComboBox *combo, NSInteger index) {
  // A text not in the list changes nothing; the selected item is shown already.
  if (index == NSNotFound || index == [combo indexOfSelectedItem])
    return;
  [combo selectItemAtIndex:index];
  ShowComboItem(combo, index);
}

// A control disabled while it has the focus would keep it, and the keys with
// it, though a person can no longer use it: the focus leaves it, as it leaves
// a field, and the next Tab starts from the first control.
void SetEnabled(NSControl *control, BOOL enabled) {
  if (![control isEnabled] == !enabled)
    return;
  [control setEnabled:enabled];
  NSWindow *window = [control window];
  if (!enabled && [window firstResponder] == control)
    [window makeFirstResponder:nil];
  // Tab skips a disabled control and reaches it again once enabled.
  [[OptionsPanel sharedController] linkKeyViewLoop];
}

void SetFieldEnabled(NSTextField *field, BOOL enabled) {
  if (!enabled && [field currentEditor])
    [field validateEditing];
  SetEnabled(field, enabled);
}

NSSize WidestCellSize(NSMatrix *group) {
  NSSize size = NSZeroSize;
  for (NSCell *cell in [group cells]) {
    size.width = MAX(size.width, [cell cellSize].width);
    size.height = MAX(size.height, [cell cellSize].height);
  }
  return size;
}
