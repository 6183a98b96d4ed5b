#import "panel/controls.h"

#import "platform/platform.h"

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

// A field made in code wraps a long text onto lines it has no room for, on
// AppKit as on GNUstep, and shows only the last fragment; on GNUstep a wrapped
// megabyte also runs past the room its field editor gives a text, and the
// toolkit complains "can't find text container for glyph" at each edit. A
// scrollable cell stops wrapping and clips its one line (both toolkits turn
// wrapping off with it), scrolled to the caret. Single-line mode is left off:
// GNUstep's drops line-break characters (U+0085) from the text itself.
NSTextField *MakeTextField(NSRect frame) {
  NSTextField *field = [[[VOPTextField alloc] initWithFrame:frame] autorelease];
  [[field cell] setScrollable:YES];
  return field;
}

void SetFieldEnabled(NSTextField *field, BOOL enabled) {
  if ([field currentEditor])
    [field validateEditing];
  SetEnabled(field, enabled);
}
