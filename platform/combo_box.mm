#import "platform/platform.h"

#ifdef GNUSTEP
// GNUstep marks a focused list only by the grey highlight of its shown text,
// and after a pick with the mouse by nothing at all: a person could not tell
// where the keys would go. The list draws the theme's focus frame round
// itself while it has the focus, itself or through the field editor.
@implementation VOPComboBox

- (BOOL)hasFocus {
  NSWindow *window = [self window];
  NSResponder *responder = [window firstResponder];
  return [window isKeyWindow] && (responder == self || responder == [self currentEditor]);
}

- (void)drawRect:(NSRect)dirty {
  [super drawRect:dirty];
  if ([self hasFocus])
    [[GSTheme theme] drawFocusFrame:NSInsetRect([self bounds], 1, 1) view:self];
}

// The focus comes to a list as its text is selected in the field editor, and
// leaves as that edit ends.
- (void)selectText:(id)sender {
  [super selectText:sender];
  [self setNeedsDisplay:YES];
}

- (void)textDidEndEditing:(NSNotification *)notification {
  [super textDidEndEditing:notification];
  [self setNeedsDisplay:YES];
}

@end
#endif
