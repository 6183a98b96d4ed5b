#import "platform/platform.h"

#ifdef GNUSTEP
// GNUstep's field editor knows cut:, copy:, paste: and selectAll:, but with
// no main menu nothing sends them: Ctrl+V did nothing, Ctrl+A moved the caret
// to the start of the line (an Emacs binding), and Alt, GNUstep's command key,
// typed its letter (Alt+C put "c" into a field). These are the keys that edit
// text on a Linux desktop, as other toolkits' fields take them.

static const NSEventModifierFlags kChordFlags = NSControlKeyMask | NSCommandKeyMask;

// Super (the Windows key) edits nothing on a Linux desktop: in other toolkits'
// fields Super+V neither types nor pastes. GNUstep's X back end reports the
// left Super key as its Help key by default (the GSSecondHelpKey default) and
// does not see the right one at all, nor tells which X modifiers were down.
static const NSEventModifierFlags kSwallowedFlags = kChordFlags | NSHelpKeyMask;

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
  return (flags & kSwallowedFlags) && IsTyped(key);
}

// The toolkit's own word for an item, in the user's languages as GNUstep reads
// them (the NSLanguages default, else the LANGUAGE variable or the locale), as
// AppKit's field editor brings its own menu that the system translates.
// GNUstep's tables have no "Select All" and leave some words in English; those
// show in English.
static NSString *ToolkitWord(NSString *english) {
  return [[NSBundle bundleForLibrary:@"gnustep-gui"] localizedStringForKey:english
                                                                     value:english
                                                                     table:nil];
}

// GNUstep gives a menu that is neither the main menu nor a pop-up button's a
// title bar, drawn black when the title is empty; a menu that pops up at a
// right click shows only its items on other desktops. This view gives that
// bar no height.
@interface VOPContextMenuView : NSMenuView
@end

@implementation VOPContextMenuView
+ (float)menuBarHeight {
  return 0;
}
@end

// GNUstep offers no menu on a right click in a field; this one has what other
// toolkits' fields offer. Its items go to the field editor, which is the
// first responder while a field is edited.
static NSMenu *EditMenu() {
  static NSMenu *menu = nil;
  if (menu)
    return menu;
  menu = [[NSMenu alloc] initWithTitle:@""];
  [menu setMenuRepresentation:[[[VOPContextMenuView alloc] initWithFrame:NSZeroRect] autorelease]];
  [menu addItemWithTitle:ToolkitWord(@"Cut") action:@selector(cut:) keyEquivalent:@""];
  [menu addItemWithTitle:ToolkitWord(@"Copy") action:@selector(copy:) keyEquivalent:@""];
  [menu addItemWithTitle:ToolkitWord(@"Paste") action:@selector(paste:) keyEquivalent:@""];
  [menu addItemWithTitle:ToolkitWord(@"Select All") action:@selector(selectAll:) keyEquivalent:@""];
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

// GNUstep centres the top of a menu, where its title bar would be, under the
// pointer; with no bar the first item would lie there, lit at once and taken
// by a click that did not aim at it. Other desktops open the menu beside the
// pointer: below and to the right where the screen has room.
static void PopUpBesidePointer(NSMenu *menu, NSWindow *window, NSEvent *event) {
  NSMenuView *view = [menu menuRepresentation];
  [menu displayTransient];
  NSPoint pointer = [window convertBaseToScreen:[event locationInWindow]];
  NSSize size = [[view window] frame].size;
  NSRect screen = [[window screen] visibleFrame];
  NSPoint origin = NSMakePoint(pointer.x + 1, pointer.y - 1 - size.height);
  if (origin.x + size.width > NSMaxX(screen))
    origin.x = pointer.x - 1 - size.width;
  if (origin.y < NSMinY(screen))
    origin.y = pointer.y + 1;
  [[view window] setFrameOrigin:origin];
  [view mouseDown:event];
  [menu closeTransient];
}

// A right press starts the field's edit, as a left press does, so that the
// menu's items reach its text. GNUstep's menu closes as the button that opened
// it is released: opened at the release, it stays up as other toolkits' menus
// do after a click, until an item or elsewhere is clicked.
static BOOL OfferEditMenu(NSWindow *window, NSEvent *event) {
  VOPTextField *field = FieldUnder(window, event);
  if (!field)
    return NO; // off the fields, for the toolkit as any right click
  if ([event type] == NSRightMouseDown)
    [window makeFirstResponder:field];
  else if ([field currentEditor])
    PopUpBesidePointer([field menu], window, event);
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
