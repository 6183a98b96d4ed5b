#import "platform/platform.h"

#ifdef GNUSTEP
// How much of the tab view's height AppKit keeps for its tabs and bezel.
static const CGFloat kAppKitTabChrome = 42;

@implementation VOPPanelTabView

// GNUstep's tab view is flipped: keeping the content's bottom edge where
// GNUstep puts it and shortening it from the top leaves the tabs where they are.
- (NSRect)contentRect {
  NSRect content = [super contentRect];
  CGFloat height = NSHeight([self bounds]) - kAppKitTabChrome;
  if (NSHeight(content) > height) {
    content.origin.y += NSHeight(content) - height;
    content.size.height = height;
  }
  return content;
}

@end
#endif
