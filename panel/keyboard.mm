#import "panel/OptionsPanel.h"

// The keyboard, as in AppKit dialogs with full keyboard access. The enabled
// controls on screen form the key-view loop (the order Tab visits them) in the
// order a person reads the panel, linked again when the tab shown or a
// control's enabled state changes. AppKit itself walks it on Tab, sends Escape
// as cancelOperation: and switches tabs on Ctrl+Tab; GNUstep needs the help of
// platform/keyboard.mm.

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
  NSResponder *responder = [[self window] firstResponder];
  // A text field being edited hands the focus to the window's field editor.
  if ([responder isKindOfClass:[NSText class]] && [(NSText *)responder isFieldEditor])
    responder = (NSResponder *)[(NSText *)responder delegate];
  return [responder isKindOfClass:[NSView class]] ? (NSView *)responder : nil;
}

// The first control of the shown tab that can take the focus: on the Image tab
// the size mode group, on the Environment tab the background group. Both are
// always enabled and start their tab's reading order; a field or a list first
// would take the first keys as an edit.
- (NSView *)firstControlOfShownTab {
  for (NSView *control in [self shownTabKeyOrder])
    if (CanTakeFocus(control))
      return control;
  return nil;
}

- (void)linkKeyViewLoop {
  NSArray *order = [self focusOrder];
  NSUInteger count = [order count];
  for (NSUInteger i = 0; i < count; ++i)
    [[order objectAtIndex:i] setNextKeyView:[order objectAtIndex:(i + 1) % count]];
  [[self window] setInitialFirstResponder:[self firstControlOfShownTab]];
}

- (void)focusFirstControlOfShownTab {
  [self linkKeyViewLoop];
  NSView *first = [self firstControlOfShownTab];
  if (first)
    [[self window] makeFirstResponder:first];
}

// The focus follows into a tab the user shows, by key or by click.
- (void)tabView:(NSTabView *)tabView didSelectTabViewItem:(NSTabViewItem *)item {
  [self focusFirstControlOfShownTab];
}

// Escape, and Cmd+period, from any control: the window hands it to its controller.
- (void)cancelOperation:(id)sender {
  [self onCloseClicked];
}

// A field being edited gets Escape first, and its field editor would offer
// completions with it; the panel closes as from any other control.
- (BOOL)control:(NSControl *)control
               textView:(NSTextView *)textView
    doCommandBySelector:(SEL)command {
  if (command != @selector(cancelOperation:))
    return NO;
  [self onCloseClicked];
  return YES;
}

@end
