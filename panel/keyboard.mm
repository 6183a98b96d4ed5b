#import "panel/OptionsPanel.h"

// What a key does on the panel, as AppKit dialogs behave with full keyboard
// access. The panel keeps its own order of controls rather than the toolkit's
// key-view chain: GNUstep chains a tab's views in the order of their frames,
// which interleaves the two columns and the header, and a chain that reaches a
// non-editable combo box stays there (its field editor keeps Tab to itself).

// Characters of the keys the panel handles itself.
static const unichar kTabKey = '\t';
static const unichar kBackTabKey = 0x19;
static const unichar kEscapeKey = 0x1b;

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
      return YES;
  return NO;
}

// Only the shown tab's controls are asked, and those are all on the window.
static BOOL CanTakeFocus(NSView *control) {
  return ![control isKindOfClass:[NSControl class]] || [(NSControl *)control isEnabled];
}

@implementation OptionsPanel (Keyboard)

- (NSArray *)shownTabKeyOrder {
  NSInteger tab = [myTabView indexOfTabViewItem:[myTabView selectedTabViewItem]];
  return tab == 1 ? environmentKeyOrder : imageKeyOrder;
}

// The header, the shown tab (its left column top to bottom, then its right
// column), then OK and Close: the order in which a person reads the panel.
- (NSArray *)focusOrder {
  NSMutableArray *order = [NSMutableArray array];
  NSMutableArray *all = [NSMutableArray arrayWithObject:myPresetCombo];
  [all addObjectsFromArray:[self shownTabKeyOrder]];
  [all addObjectsFromArray:@[ m_pButton, m_cButton ]];
  for (NSView *control in all)
    if (CanTakeFocus(control))
      [order addObject:control];
  return order;
}

- (NSView *)focusedControl {
  NSResponder *responder = [window firstResponder];
  // A text field being edited hands the focus to the window's field editor.
  if ([responder isKindOfClass:[NSText class]] && [(NSText *)responder isFieldEditor])
    responder = (NSResponder *)[(NSText *)responder delegate];
  return [responder isKindOfClass:[NSView class]] ? (NSView *)responder : nil;
}

// The first control of the shown tab that can take the focus: on the Image tab
// the size mode group, on the Environment tab the background group. Both are
// always enabled and start their tab's reading order; a field or a list first
// would take the first keys as an edit.
- (void)focusFirstControlOfShownTab {
  for (NSView *control in [self shownTabKeyOrder])
    if (CanTakeFocus(control)) {
      [window makeFirstResponder:control];
      return;
    }
}

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
  [window makeFirstResponder:[order objectAtIndex:next]];
}

- (void)showTabBy:(NSInteger)step {
  NSInteger count = [myTabView numberOfTabViewItems];
  NSInteger shown = [myTabView indexOfTabViewItem:[myTabView selectedTabViewItem]];
  [myTabView selectTabViewItemAtIndex:(shown + step + count) % count];
}

// The focus follows into a tab the user shows, by key or by click.
- (void)tabView:(NSTabView *)tabView didSelectTabViewItem:(NSTabViewItem *)item {
  [self focusFirstControlOfShownTab];
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
