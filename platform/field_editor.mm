#import "platform/platform.h"

#ifdef GNUSTEP
// GNUstep's field editor moves the caret and deletes by UTF-16 unit. Left or
// Backspace beside a character outside the Basic Multilingual Plane (an emoji,
// a rarer CJK ideograph) split it into two lone surrogates, on which the
// toolkit then throws as it records the undo or converts the text: a typed
// letter between the halves aborted the process, Backspace lost the key and
// OK lost the text. This editor keeps the caret, the selection and each
// deletion on whole characters, as AppKit's does.
@interface VOPFieldEditor : NSTextView
@end

// An index inside a composed character moves to that character's end when
// the edge it belongs to moved forward, else to its start.
static NSUInteger WholeCharacterEdge(NSString *text, NSUInteger index, BOOL forward) {
  if (index == 0 || index >= [text length])
    return index;
  NSRange character = [text rangeOfComposedCharacterSequenceAtIndex:index];
  if (character.location == index)
    return index;
  return forward ? NSMaxRange(character) : character.location;
}

@implementation VOPFieldEditor

// Every change of the caret or the selection comes here: the arrows, a click,
// a drag, Shift with an arrow. Each edge keeps the direction it moved in, so
// that Left and Right step over a whole character and a selection can shrink.
- (void)setSelectedRange:(NSRange)range
                affinity:(NSSelectionAffinity)affinity
          stillSelecting:(BOOL)stillSelecting {
  NSString *text = [self string];
  NSRange old = [self selectedRange];
  // The layout manager passes ranges past the end while text is deleted.
  if (NSMaxRange(range) <= [text length]) {
    NSUInteger start = WholeCharacterEdge(text, range.location, range.location > old.location);
    NSUInteger end =
        WholeCharacterEdge(text, NSMaxRange(range), NSMaxRange(range) >= NSMaxRange(old));
    range = NSMakeRange(start, MAX(start, end) - start);
  }
  [super setSelectedRange:range affinity:affinity stillSelecting:stillSelecting];
}

// With no selection, the toolkit deletes the one unit before or after the
// caret; the whole character there is selected first.
- (void)deleteBackward:(id)sender {
  NSRange caret = [self selectedRange];
  if (caret.length == 0 && caret.location > 0)
    [self setSelectedRange:[[self string]
                               rangeOfComposedCharacterSequenceAtIndex:caret.location - 1]];
  [super deleteBackward:sender];
}

- (void)deleteForward:(id)sender {
  NSRange caret = [self selectedRange];
  if (caret.length == 0 && caret.location < [[self string] length])
    [self setSelectedRange:[[self string] rangeOfComposedCharacterSequenceAtIndex:caret.location]];
  [super deleteForward:sender];
}

@end

@implementation VOPKeyPanel (WholeCharacters)

// The window's one field editor, made as GNUstep makes its own, before the
// toolkit would make a plain one.
- (NSText *)fieldEditor:(BOOL)create forObject:(id)object {
  if (!_fieldEditor && create) {
    _fieldEditor = [VOPFieldEditor new];
    [_fieldEditor setFieldEditor:YES];
  }
  return [super fieldEditor:create forObject:object];
}

@end
#endif
