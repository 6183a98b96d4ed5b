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

NSButton *MakeCheckBox(NSRect frame, NSString *title) {
  NSButton *box = [[[VOPCheckBox alloc] initWithFrame:frame] autorelease];
  SetButtonLook(box, title);
  [box sizeToFit];
  [box setButtonType:NSButtonTypeSwitch];
  return box;
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
