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

// The Environment tab's controls are first drawn when the tab is first
// chosen, and their images looked up then: that is done here, at once and
// with the short image search, rather than at the event loop's next turn with
// the host's image types (tens of milliseconds and ImageMagick's coders, some
// 11 MiB). While the panel is being built the tab view is on no window yet.
- (void)selectTabViewItem:(NSTabViewItem *)item {
  ShortImageSearch imageSearch;
  [super selectTabViewItem:item];
  [[self window] displayIfNeeded];
}

@end
#endif
