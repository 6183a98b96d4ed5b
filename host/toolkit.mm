#import "host/toolkit.h"

#import "panel/event_pump.h"
#import "platform/platform.h"

#include "host/ruby_runtime.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

// A host's application has launched before any plugin runs; ours launches
// too, but the words on our command line are a plugin and its arguments, never
// documents to open.
@interface VOPHostApplicationDelegate : NSObject <NSApplicationDelegate>
@end

@implementation VOPHostApplicationDelegate
- (BOOL)application:(NSApplication *)application openFile:(NSString *)file {
  return YES;
}
- (void)application:(NSApplication *)application openFiles:(NSArray *)files {
  [application replyToOpenOrPrint:NSApplicationDelegateReplySuccess];
}
- (BOOL)applicationShouldOpenUntitledFile:(NSApplication *)application {
  return NO;
}
@end

namespace host {

// Long enough not to spin, short enough that Ctrl-C and Ruby's threads get
// their turn promptly.
static const NSTimeInterval kWaitSeconds = 0.05;

// The toolkit names no cause when it cannot reach the X server; the usual
// ones are an unset DISPLAY and a server that is not running.
static void PrintDisplayHint() {
  const char *display = std::getenv("DISPLAY");
  if (!display || !*display)
    std::fputs("velmar-host: DISPLAY is not set: run it in a desktop session, or under "
               "scripts/with-display.sh, which starts an X server of its own (Xvfb)\n",
               stderr);
  else
    std::fprintf(stderr,
                 "velmar-host: no X server answers at DISPLAY=%s: is it running, and may this "
                 "user connect to it?\n",
                 display);
}

bool create_application() {
  HostSignalsGuard hostSignals;
  @autoreleasepool {
    @try {
      EnsureApplicationObject();
      // Never released: the application keeps its delegate for its whole life.
      [NSApp setDelegate:[[VOPHostApplicationDelegate alloc] init]];
      // Launching subscribes the application to its windows' key notices:
      // without it no window ever becomes its key window, and the back-end
      // drops every key the user presses.
      [NSApp finishLaunching];
      return true;
    } @catch (NSException *exception) {
      // Typically no display: say so plainly rather than abort.
      std::fprintf(stderr, "velmar-host: %s\n", [[exception reason] UTF8String]);
      if ([[exception reason] rangeOfString:@"X Server"].location != NSNotFound)
        PrintDisplayHint();
      return false;
    }
  }
}

std::string program_folder() {
  @autoreleasepool {
    NSString *path = [[NSBundle mainBundle] executablePath];
    return [[[path stringByResolvingSymlinksInPath] stringByDeletingLastPathComponent]
        fileSystemRepresentation];
  }
}

// A titled window on screen: a panel the user still has to deal with. The
// application's icon and menus have no title bar.
static bool panel_on_screen() {
  @autoreleasepool {
    for (NSWindow *window in [NSApp windows])
      if ([window isVisible] && ([window styleMask] & NSWindowStyleMaskTitled))
        return true;
    return false;
  }
}

// The extension stops its own; whatever else the toolkit throws must not end the host.
static void report_toolkit_exception(NSException *exception) {
  std::fprintf(stderr, "velmar-host: %s: %s\n", [[exception name] UTF8String],
               [[exception reason] UTF8String]);
}

int run_event_loop(std::optional<double> timeout_seconds) {
  using Clock = std::chrono::steady_clock;
  auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                     std::chrono::duration<double>(timeout_seconds.value_or(0)));
  while (panel_on_screen()) {
    if (timeout_seconds && Clock::now() >= deadline) {
      std::fprintf(stderr, "velmar-host: the panel is still open after %g seconds\n",
                   *timeout_seconds);
      return 3;
    }
    HandleQueuedEvents(kWaitSeconds, report_toolkit_exception);
    if (int status = ruby_turn(); status >= 0)
      return status;
  }
  return 0;
}

} // namespace host
