#import "panel/event_pump.h"

#import "platform/platform.h"

static void Dispatch(NSEvent *event, void (*failed)(NSException *)) {
  @try {
    [NSApp sendEvent:event];
    [NSApp updateWindows];
  } @catch (NSException *exception) {
    if (!failed)
      @throw;
    failed(exception);
  }
}

void HandleQueuedEvents(NSTimeInterval wait, void (*failed)(NSException *)) {
  HostSignalsGuard hostSignals;
  for (bool first = true;; first = false) {
    @autoreleasepool {
      NSDate *until = first && wait > 0 ? [NSDate dateWithTimeIntervalSinceNow:wait] : nil;
      NSEvent *event = [NSApp nextEventMatchingMask:NSEventMaskAny
                                          untilDate:until
                                             inMode:NSDefaultRunLoopMode
                                            dequeue:YES];
      if (!event)
        return;
      Dispatch(event, failed);
    }
  }
}
