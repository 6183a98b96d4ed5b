// Answering the modal folder chooser from inside its session, as a user
// would, so that a test never waits on a person.
#import "driver/functions.h"

#include "platform/first_copy_classes.h"

#include <ctime>

// Answers the modal folder chooser from inside its session.
@interface VOPFolderChooserAnswer : NSObject {
@public
  NSString *folder; // nil: cancel
  BOOL closing;     // closed as a window manager closes it, not answered
  BOOL answered;
  long long shownAt; // CLOCK_MONOTONIC ns when first seen on screen and drawn; 0 until then
}
- (void)answer;
- (void)answerOnceShown;
- (void)giveUp;
@end

// A window manager's close (its title-bar button, Alt+F4) as the window
// receives it: GNUstep's X back-end makes this event of the WM_DELETE_WINDOW
// message; on AppKit the close button performs the close itself.
static void CloseAsWindowManager(NSWindow *window) {
#ifdef GNUSTEP
  [window sendEvent:[NSEvent otherEventWithType:NSAppKitDefined
                                       location:NSZeroPoint
                                  modifierFlags:0
                                      timestamp:0
                                   windowNumber:[window windowNumber]
                                        context:nil
                                        subtype:GSAppKitWindowClose
                                          data1:0
                                          data2:0]];
#else
  [window performClose:nil];
#endif
}

@implementation VOPFolderChooserAnswer
- (void)answer {
  NSOpenPanel *chooser = [NSOpenPanel openPanel];
  answered = YES;
  if (closing) {
    CloseAsWindowManager(chooser);
    // One that stays open is not answered, and is aborted at the time limit.
    answered = ![chooser isVisible];
  } else if (folder) {
    [chooser setDirectoryURL:[NSURL fileURLWithPath:folder isDirectory:YES]];
    [chooser ok:nil];
  } else {
    [chooser cancel:nil];
  }
}
// Looks every millisecond of the modal session until the chooser is on
// screen with every view drawn, as a user would first see it, then answers.
- (void)answerOnceShown {
  // Not +openPanel, which sets the shared chooser up anew each time it is asked.
  NSWindow *chooser = [NSApp modalWindow];
  if (![chooser isVisible] || [chooser viewsNeedDisplay]) {
    [self performSelector:@selector(answerOnceShown)
               withObject:nil
               afterDelay:0.001
                  inModes:@[ NSModalPanelRunLoopMode ]];
    return;
  }
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  shownAt = now.tv_sec * 1000000000LL + now.tv_nsec;
  [self answer];
}
- (void)giveUp {
  if (!answered)
    [NSApp abortModal];
}
@end

const char velmar::kFirstCopyMarkerClass[] = "VOPFolderChooserAnswer";

static VOPFolderChooserAnswer *pendingAnswer = nil;

namespace driver {

// Replaces the pending answer: `how` answers the next chooser after `delay`
// seconds of its modal session, `giveUp` aborts it after `limit`.
static void ArmAnswer(const char *path, SEL how, double delay, double limit) {
  [pendingAnswer release];
  pendingAnswer = [[VOPFolderChooserAnswer alloc] init];
  pendingAnswer->folder = path ? [[NSString alloc] initWithUTF8String:path] : nil;
  NSArray *modes = @[ NSModalPanelRunLoopMode ];
  [pendingAnswer performSelector:how withObject:nil afterDelay:delay inModes:modes];
  [pendingAnswer performSelector:@selector(giveUp) withObject:nil afterDelay:limit inModes:modes];
}

// The next folder chooser is answered with the folder (nil cancels); one that
// is not answered within the time limit is aborted, so a test cannot hang on it.
static VALUE answer_folder_chooser(VALUE, VALUE folder, VALUE seconds) {
  const char *path = NIL_P(folder) ? nullptr : StringValueCStr(folder);
  double limit = NUM2DBL(seconds);
  return Drive([=] {
    ArmAnswer(path, @selector(answer), 0.05, limit);
    return (id)nil;
  });
}

// The next folder chooser is cancelled as soon as it is on screen and drawn;
// folder_chooser_shown_at then tells when that was.
static VALUE cancel_folder_chooser_once_shown(VALUE, VALUE seconds) {
  double limit = NUM2DBL(seconds);
  return Drive([=] {
    ArmAnswer(nullptr, @selector(answerOnceShown), 0, limit);
    return (id)nil;
  });
}

// The next folder chooser is closed as soon as it is on screen and drawn, as
// a person closes it through the window manager.
static VALUE close_folder_chooser_once_shown(VALUE, VALUE seconds) {
  double limit = NUM2DBL(seconds);
  return Drive([=] {
    ArmAnswer(nullptr, @selector(answerOnceShown), 0, limit);
    pendingAnswer->closing = YES;
    return (id)nil;
  });
}

// Process.clock_gettime(Process::CLOCK_MONOTONIC, :nanosecond) at that moment, or nil.
static VALUE folder_chooser_shown_at(VALUE) {
  return Drive([] {
    return (id)(pendingAnswer && pendingAnswer->shownAt ? @(pendingAnswer->shownAt) : nil);
  });
}

static VALUE folder_chooser_answered(VALUE) {
  return Drive([] { return (id)Flag(pendingAnswer && pendingAnswer->answered); });
}

static const Function kFolderChooserFunctions[] = {
    {"answer_folder_chooser", DRIVER_FUNCTION(answer_folder_chooser), 2},
    {"folder_chooser_answered?", DRIVER_FUNCTION(folder_chooser_answered), 0},
    {"cancel_folder_chooser_once_shown", DRIVER_FUNCTION(cancel_folder_chooser_once_shown), 1},
    {"close_folder_chooser_once_shown", DRIVER_FUNCTION(close_folder_chooser_once_shown), 1},
    {"folder_chooser_shown_at", DRIVER_FUNCTION(folder_chooser_shown_at), 0},
};
const FunctionGroup kFolderChooser = Group(kFolderChooserFunctions);

} // namespace driver
