#import "panel/OptionsPanel.h"

#ifdef GNUSTEP
// GNUstep's keys on the panel, as in AppKit dialogs. The panel's window takes
// the keys that move the focus, switch tabs and close the panel before the
// focused control sees them, and walks the panel's own order of controls:
// GNUstep's own chain mixes the two columns, sticks at a list, loses Escape
// in a field and ignores Ctrl+Tab. AppKit needs none of this (panel/keyboard.mm).

// Characters of the keys the panel handles itself.
static const unichar kTabKey = '\t';
static const unichar kBackTabKey = 0x19;
static const unichar kEscapeKey = 0x1b;

@interface OptionsPanel (GNUstepKeys)
// Whether the panel took the key itself: Tab, Shift+Tab, Ctrl+Tab, Ctrl+Shift+Tab, Escape.
- (BOOL)handleKeyDown:(NSEvent *)event;
@end

@implementation VOPKeyPanel

- (void)sendEvent:(NSEvent *)event {
  if ([event type] == NSEventTypeKeyDown && [[self delegate] isKindOfClass:[OptionsPanel class]] &&
      [(OptionsPanel *)[self delegate] handleKeyDown:event])
    return;
  if (HandleEditingEvent(self, event))
    return;
  [super sendEvent:event];
}

@end

// An open list of a combo box is a window of its own at the pop-up level; while
// it shows, it takes the keys that close it.
static BOOL PopUpListIsOpen() {
  for (NSWindow *window in [NSApp windows])
    if ([window isVisible] && [window level] == NSPopUpMenuWindowLevel)
      return YES; // a list's window
  return NO;
}

// GNUstep's non-editable combo box opens its list only for a click on its
// button, so a person at the keyboard could never pick an item: a key opens it
// the way that button does.
static BOOL OpenComboListFromKey(NSComboBox *combo) {
  SEL open = NSSelectorFromString(@"_didClickWithinButton:");
  if (![[combo cell] respondsToSelector:open])
    return NO;
  [[combo cell] performSelector:open withObject:combo];
  return YES; // the key opened the list
}

@implementation OptionsPanel (GNUstepKeys)

- (void)moveFocusBy:(NSInteger)step {
  NSArray *order = [self focusOrder];
  NSInteger count = (NSInteger)[order count];
  if (count == 0)
    return;
  NSUInteger current = [order indexOfObjectIdenticalTo:[self focusedControl]];
  NSInteger next;
  if (current == NSNotFound)
    next = step > 0 ? 0 : count - 1;
  else
    next = ((NSInteger)current + step + count) % count;
  [[self window] makeFirstResponder:[order objectAtIndex:next]];
}

- (void)showTabBy:(NSInteger)step {
  NSInteger count = [myTabView numberOfTabViewItems];
  NSInteger shown = [myTabView indexOfTabViewItem:[myTabView selectedTabViewItem]];
  [myTabView selectTabViewItemAtIndex:(shown + step + count) % count];
}

- (BOOL)handleKeyDown:(NSEvent *)event {
  NSString *characters = [event charactersIgnoringModifiers];
  if ([characters length] != 1 || PopUpListIsOpen())
    return NO;
  unichar key = [characters characterAtIndex:0];
  NSEventModifierFlags flags = [event modifierFlags];
  BOOL backwards = key == kBackTabKey || (flags & NSEventModifierFlagShift);
  if (key == kEscapeKey) {
    // Also while a field is edited, where GNUstep's field editor swallows Escape.
    [self onCloseClicked];
    return YES;
  }
  NSView *focused = [self focusedControl];
  if ((key == NSDownArrowFunctionKey || key == ' ') && [focused isKindOfClass:[NSComboBox class]])
    return OpenComboListFromKey((NSComboBox *)focused);
  if (key != kTabKey && key != kBackTabKey)
    return NO;
  if (flags & NSEventModifierFlagControl)
    [self showTabBy:backwards ? -1 : 1];
  else
    [self moveFocusBy:backwards ? -1 : 1];
  return YES;
}

@end
#endif
