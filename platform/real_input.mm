#import "platform/platform.h"

#ifdef GNUSTEP
#import <GNUstepGUI/GSDisplayServer.h>

#include <X11/Xlib.h>

// The back-end learns of X events from poll() on its connection. An event that
// Xlib has already read into its own queue, during a round trip made while the
// event before it was handled, leaves nothing for poll() to report: a button's
// tracking loop, which waits with no time limit, then sleeps through the
// release the user already gave until some other X event arrives. This watcher
// keeps the run loop from blocking while Xlib holds events, and has the
// back-end take them.
@interface BufferedEventWatcher : NSObject <RunLoopEvents> {
  id server_;
  Display *display_;
}
- (instancetype)initWithServer:(id)server;
@end

@implementation BufferedEventWatcher
- (instancetype)initWithServer:(id)server {
  if ((self = [super init])) {
    server_ = server;
    display_ = static_cast<Display *>([server serverDevice]);
  }
  return self;
}

- (BOOL)runLoopShouldBlock:(BOOL *)trigger {
  *trigger = QLength(display_) > 0;
  return !*trigger;
}

- (void)receivedEvent:(void *)data
                 type:(RunLoopEventType)type
                extra:(void *)extra
              forMode:(NSString *)mode {
  [server_ receivedEvent:data type:type extra:extra forMode:mode];
}
@end

// The back-end reads its mouse settings at the first press of a process
// (-initializeMouse), through a round trip to the notification daemon that
// reads the X connection re-entrantly: a release that came with the press is
// then handled before it, and the button waits for a release that never comes.
static void ReadMouseSettings(id server) {
  SEL initialize = NSSelectorFromString(@"initializeMouse");
  if ([server respondsToSelector:initialize])
    [server performSelector:initialize];
}

static void WatchBufferedEvents(id server) {
  if (![server respondsToSelector:@selector(receivedEvent:type:extra:forMode:)] ||
      ![server serverDevice])
    return;
  // Lives as long as the run loop watches it: the whole process.
  BufferedEventWatcher *watcher = [[BufferedEventWatcher alloc] initWithServer:server];
  NSRunLoop *loop = [NSRunLoop currentRunLoop];
  for (NSString *mode in @[ NSDefaultRunLoopMode, NSEventTrackingRunLoopMode,
                            NSModalPanelRunLoopMode ])
    [loop addEvent:watcher type:ET_TRIGGER watcher:watcher forMode:mode];
}
#endif

void PrepareRealInput() {
#ifdef GNUSTEP
  id server = GSCurrentServer();
  ReadMouseSettings(server);
  WatchBufferedEvents(server);
#endif
}
