#import "platform/platform.h"

#ifdef GNUSTEP
#import <GNUstepGUI/GSDisplayServer.h>

// GNUstep's back-end waits for X events with poll(). A mouse release that Xlib
// already read into its own queue leaves poll() nothing to report, so a
// button's tracking loop sleeps through it and a quick click on the close box
// hangs the panel. A timer wakes the loops that wait so, only while they run:
// at each wake-up the back-end takes the release from Xlib.
@interface VOPRunLoopWaker : NSObject
- (void)wake:(NSTimer *)timer;
@end

@implementation VOPRunLoopWaker
- (void)wake:(NSTimer *)timer {
}
@end

static const NSTimeInterval kWakeSeconds = 0.05;

static void WakeWaitingLoops() {
  // Lives as long as the run loop keeps the timer: the whole process.
  NSTimer *timer = [NSTimer timerWithTimeInterval:kWakeSeconds
                                           target:[[[VOPRunLoopWaker alloc] init] autorelease]
                                         selector:@selector(wake:)
                                         userInfo:nil
                                          repeats:YES];
  NSRunLoop *loop = [NSRunLoop currentRunLoop];
  for (NSString *mode in @[ NSEventTrackingRunLoopMode, NSModalPanelRunLoopMode ])
    [loop addTimer:timer forMode:mode];
}

// The back-end reads its mouse settings at the first press of a process
// (-initializeMouse), through a round trip to the notification daemon that
// reads the X connection re-entrantly: a release that came with the press is
// then handled before it, and the button waits for a release that never comes.
static void ReadMouseSettings(id server) {
  SEL initialize = NSSelectorFromString(@"initializeMouse");
  if ([server respondsToSelector:initialize])
    [server performSelector:initialize];
}

// platform/pop_up_lists.mm
void EndPopUpListsAsOtherToolkitsDo();

#endif

void PrepareRealInput() {
#ifdef GNUSTEP
  ReadMouseSettings(GSCurrentServer());
  WakeWaitingLoops();
  EndPopUpListsAsOtherToolkitsDo();
#endif
}
