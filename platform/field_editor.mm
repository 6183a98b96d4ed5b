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

// GNUstep lays a text out in runs of at most 16384 characters, but text put
// next to a run of fewer than 16 joins that run whole, and its glyph generator
// then sets ten bytes of stack aside for each character of a run: a megabyte
// pasted after a few typed digits overran the stack (Ruby raised
// SystemStackError from inside the toolkit). Text longer than this goes in as
// two changes, so that only its start can join a short run.
static const NSUInteger kJoiningLength = 1024;

// Where a long text is cut in two: not between the halves of a surrogate
// pair, which on its own the toolkit cannot lay out.
static NSUInteger JoiningEnd(NSString *text) {
  unichar next = [text characterAtIndex:kJoiningLength];
  return next >= 0xdc00 && next <= 0xdfff ? kJoiningLength - 1 : kJoiningLength;
}

@implementation VOPFieldEditor

// Typing, pasting and dropping all change the text here.
- (void)replaceCharactersInRange:(NSRange)range withString:(NSString *)text {
  if ([text length] <= kJoiningLength) {
    [super replaceCharactersInRange:range withString:text];
    return;
  }
  NSUInteger end = JoiningEnd(text);
  [super replaceCharactersInRange:range withString:[text substringToIndex:end]];
  [super replaceCharactersInRange:NSMakeRange(range.location + end, 0)
                       withString:[text substringFromIndex:end]];
}

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

// A field holds one line, where GNUstep's Up and Down looked for the line
// above or below glyph by glyph: 22 s for 100,000 characters, and a script's
// megabyte hung the panel. As in AppKit's fields, Up goes to the start and
// Down to the end.
- (void)moveUp:(id)sender {
  [self moveToBeginningOfDocument:sender];
}

- (void)moveDown:(id)sender {
  [self moveToEndOfDocument:sender];
}

// With Shift, the selection reaches to the start or to the end.
- (void)moveUpAndModifySelection:(id)sender {
  [self setSelectedRange:NSMakeRange(0, NSMaxRange([self selectedRange]))];
}

- (void)moveDownAndModifySelection:(id)sender {
  NSUInteger start = [self selectedRange].location;
  [self setSelectedRange:NSMakeRange(start, [[self string] length] - start)];
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
