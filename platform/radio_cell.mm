#import "platform/platform.h"

#ifdef GNUSTEP
// Room GNUstep leaves between a radio button's circle and its title, beside
// AppKit's more generous gap.
static const CGFloat kExtraTitleRoom = 1;

@implementation VOPRadioButtonCell

- (NSRect)drawTitle:(NSAttributedString *)title withFrame:(NSRect)frame inView:(NSView *)view {
  frame.origin.x += kExtraTitleRoom;
  frame.size.width -= kExtraTitleRoom;
  return [super drawTitle:title withFrame:frame inView:view];
}

- (NSSize)cellSize {
  NSSize size = [super cellSize];
  size.width += kExtraTitleRoom;
  return size;
}

@end
#endif
