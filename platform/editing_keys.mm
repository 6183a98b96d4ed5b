#import "platform/platform.h"

#ifdef GNUSTEP
// GNUstep's field editor knows cut:, copy:, paste: and selectAll:, but with
// no main menu nothing sends them: Ctrl+V did nothing, Ctrl+A moved the caret
// to the start of the line (an Emacs binding), and Alt, GNUstep's command key,
// typed its letter (Alt+C put "c" into a field). These are the keys that edit
// text on a Linux desktop, as other toolkits' fields take them.

static const NSEventModifierFlags kChordFlags = NSControlKeyMask | NSCommandKeyMask;

static SEL ActionOfLetter(unichar letter, NSEventModifierFlags flags) {
  if (!(flags & kChordFlags))
    return NULL;
  switch (letter) {
  case 'x':
    return @selector(cut:);
  case 'c':
    return @selector(copy:);
  case 'v':
    return @selector(paste:);
  case 'a':
    return @selector(selectAll:);
  case 'z':
    return (flags & NSShiftKeyMask) ? @selector(redo:) : @selector(undo:);
  default:
    return NULL;
  }
}

// The older keys of the same actions: Shift+Delete, Ctrl+Insert, Shift+Insert.
static SEL ActionOfFunctionKey(unichar key, NSEventModifierFlags flags) {
  if (key == NSDeleteFunctionKey && (flags & NSShiftKeyMask))
    return @selector(cut:);
  if (key == NSInsertFunctionKey && (flags & NSControlKeyMask))
    return @selector(copy:);
  if (key == NSInsertFunctionKey && (flags & NSShiftKeyMask))
    return @selector(paste:);
  return NULL;
}

// A character that would be typed: not a control character, not a key such
// as an arrow or Delete, which GNUstep gives characters of a private range.
static BOOL IsTyped(unichar key) {
  return key >= 0x20 && key != 0x7f && !(key >= 0xf700 && key <= 0xf8ff);
}

static void Perform(SEL action, NSText *editor) {
  NSUndoManager *undo = [editor undoManager];
  if (action == @selector(undo:))
    [undo undo];
  else if (action == @selector(redo:))
    [undo redo];
  else
    [editor performSelector:action withObject:nil];
}

static BOOL PerformEditingKey(NSWindow *window, NSEvent *event) {
  NSResponder *responder = [window firstResponder];
  NSString *characters = [[event charactersIgnoringModifiers] lowercaseString];
  if (![responder isKindOfClass:[NSText class]] || ![(NSText *)responder isFieldEditor] ||
      [characters length] != 1)
    return NO;
  // GNUstep's field editor keeps no undo unless told, and then keeps it in the
  // window's undo manager.
  if ([responder isKindOfClass:[NSTextView class]])
    [(NSTextView *)responder setAllowsUndo:YES];
  unichar key = [characters characterAtIndex:0];
  NSEventModifierFlags flags = [event modifierFlags];
  SEL action = ActionOfLetter(key, flags) ?: ActionOfFunctionKey(key, flags);
  if (action) {
    Perform(action, (NSText *)responder);
    return YES;
  }
  // Any other chord is swallowed, so that it never types its letter.
  return (flags & kChordFlags) && IsTyped(key);
}

// GNUstep offers no menu on a right click in a field; this one has what other
// toolkits' fields offer. Its items go to the field editor, which is the
// first responder while a field is edited.
static NSMenu *EditMenu() {
  static NSMenu *menu = nil;
  if (menu)
    return menu;
  menu = [[NSMenu alloc] initWithTitle:@""];
  [menu addItemWithTitle:@"Cut" action:@selector(cut:) keyEquivalent:@""];
  [menu addItemWithTitle:@"Copy" action:@selector(copy:) keyEquivalent:@""];
  [menu addItemWithTitle:@"Paste" action:@selector(paste:) keyEquivalent:@""];
  [menu addItemWithTitle:@"Select All" action:@selector(selectAll:) keyEquivalent:@""];
  return menu;
}

@implementation VOPTextField

// Made with the field, while the panel is built: a menu looks up images as it
// is made, which later would cost the host the long image search.
- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  [self setMenu:EditMenu()];
  return self;
}

@end

// The field under a right press or release, whether it is edited (the field
// editor lies over it then) or not. GNUstep did not always hand the press to
// the view under it, so the window does.
static VOPTextField *FieldUnder(NSWindow *window, NSEvent *event) {
  NSView *view = [[window contentView] hitTest:[event locationInWindow]];
  if ([view isKindOfClass:[NSText class]] && [(NSText *)view isFieldEditor])
    view = (NSView *)[(NSText *)view delegate];
  return [view isKindOfClass:[VOPTextField class]] && [(NSControl *)view isEnabled]
             ? (VOPTextField *)view
             : nil;
}

// A right press starts the field's edit, as a left press does, so that the
// menu's items reach its text. GNUstep's menu closes as the button that opened
// it is released: opened at the release, it stays up as other toolkits' menus
// do after a click, until an item or elsewhere is clicked.
static BOOL OfferEditMenu(NSWindow *window, NSEvent *event) {
  VOPTextField *field = FieldUnder(window, event);
  if (!field)
    return NO;
  if ([event type] == NSRightMouseDown)
    [window makeFirstResponder:field];
  else if ([field currentEditor])
    [NSMenu popUpContextMenu:[field menu] withEvent:event forView:[field currentEditor]];
  return YES;
}
BOOL HandleEditingEvent(NSWindow *window, NSEvent *event) {
  switch ([event type]) {
  case NSKeyDown:
    return PerformEditingKey(window, event);
  case NSRightMouseDown:
  case NSRightMouseUp:
    return OfferEditMenu(window, event);
  default:
    return NO;
  }
}
#endif
