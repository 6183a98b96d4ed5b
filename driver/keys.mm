#import "driver/keys.h"

#import "platform/platform.h"

#include <cctype>

struct NamedKey {
  const char *name;
  unichar character;
};

// What the X back-end gives the toolkit for each key; Shift+Tab arrives as a
// back tab.
static const NamedKey kNamedKeys[] = {
    {"Tab", '\t'},
    {"Return", '\r'},
    {"Escape", 0x1b},
    {"space", ' '},
    {"BackSpace", 0x08},
    {"Delete", NSDeleteFunctionKey},
    {"Insert", NSInsertFunctionKey},
    {"Up", NSUpArrowFunctionKey},
    {"Down", NSDownArrowFunctionKey},
    {"Left", NSLeftArrowFunctionKey},
    {"Right", NSRightArrowFunctionKey},
    {"Home", NSHomeFunctionKey},
    {"End", NSEndFunctionKey},
};

static const unichar kBackTab = 0x19;

struct NamedModifier {
  const char *name;
  NSEventModifierFlags flag;
};

// The toolkit's own names: GNUstep's default settings make the left Alt key the
// command key (cmd), and the right one Option.
static const NamedModifier kModifiers[] = {
    {"shift", NSEventModifierFlagShift},
    {"ctrl", NSEventModifierFlagControl},
    {"option", NSEventModifierFlagOption},
    {"cmd", NSEventModifierFlagCommand},
};

// 0 when the name is neither a named key nor a single character.
static unichar KeyCharacter(NSString *name) {
  for (const NamedKey &key : kNamedKeys)
    if ([name caseInsensitiveCompare:@(key.name)] == NSOrderedSame)
      return key.character;
  return [name length] == 1 ? [name characterAtIndex:0] : 0;
}

// NO when a word is no modifier.
static BOOL ReadModifiers(NSArray *words, NSEventModifierFlags *flags) {
  for (NSString *word in words) {
    BOOL known = NO;
    for (const NamedModifier &modifier : kModifiers)
      if ([word caseInsensitiveCompare:@(modifier.name)] == NSOrderedSame) {
        *flags |= modifier.flag;
        known = YES;
      }
    if (!known)
      return NO;
  }
  return YES;
}

// The text a press types: a letter with Shift in capitals, with Ctrl the
// control character; charactersIgnoringModifiers keeps Shift only.
static NSString *Typed(unichar character, NSEventModifierFlags flags, BOOL ignoringModifiers) {
  BOOL letter = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
  if (letter && (flags & NSEventModifierFlagShift))
    character = (unichar)toupper(character);
  if (letter && (flags & NSEventModifierFlagControl) && !ignoringModifiers)
    character &= 0x1f;
  if (character == '\t' && (flags & NSEventModifierFlagShift))
    character = kBackTab;
  return [NSString stringWithCharacters:&character length:1];
}

static NSEvent *KeyEvent(NSEventType type, NSEventModifierFlags flags, NSString *characters,
                         NSString *ignoring, NSWindow *window) {
  return [NSEvent keyEventWithType:type
                          location:NSZeroPoint
                     modifierFlags:flags
                         timestamp:[[NSProcessInfo processInfo] systemUptime]
                      windowNumber:[window windowNumber]
                           context:nil
                        characters:characters
       charactersIgnoringModifiers:ignoring
                         isARepeat:NO
                           keyCode:0];
}

NSEvent *KeyPressFor(NSString *name, NSWindow *window) {
  NSMutableArray *words = [[[name componentsSeparatedByString:@"+"] mutableCopy] autorelease];
  unichar character = KeyCharacter([words lastObject]);
  [words removeLastObject];
  NSEventModifierFlags flags = 0;
  if (!character || !ReadModifiers(words, &flags))
    return nil;
  // As the window system marks them: the toolkit binds Shift with an arrow to
  // extending the selection only for a key so marked.
  if (character >= 0xf700 && character <= 0xf8ff)
    flags |= NSEventModifierFlagFunction;
  return KeyEvent(NSEventTypeKeyDown, flags, Typed(character, flags, NO),
                  Typed(character, flags, YES), window);
}

NSEvent *KeyReleaseOf(NSEvent *press) {
  return KeyEvent(NSEventTypeKeyUp, [press modifierFlags], [press characters],
                  [press charactersIgnoringModifiers], [press window]);
}
