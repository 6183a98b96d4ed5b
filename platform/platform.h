// What differs between Apple's AppKit and GNUstep, kept in one place so the
// panel's sources read the same on both.
#pragma once

#import <AppKit/AppKit.h>

#include <signal.h>

#ifdef GNUSTEP
// GNUstep has no Core Graphics window levels; its modal-panel level plays the same role.
typedef int32_t CGWindowLevel;
typedef int32_t CGWindowLevelKey;
enum { kCGModalPanelWindowLevelKey = 10 };
static inline CGWindowLevel CGWindowLevelForKey(CGWindowLevelKey) {
  return NSModalPanelWindowLevel;
}
#else
#import <CoreGraphics/CoreGraphics.h>
#endif

#ifdef GNUSTEP
// GNUstep's combo box takes a text field delegate; Apple's names a protocol of its own.
@protocol NSComboBoxDelegate <NSTextFieldDelegate>
@end
#endif

// A host has made the application object long before any plugin runs; a plain
// interpreter has not, and GNUstep needs it before the first window. NSTask
// takes SIGCHLD when its class first initialises; doing that here, inside a
// ChildSignalGuard, hands the signal back before any task is launched.
static inline void EnsureApplicationObject() {
#ifdef GNUSTEP
  [NSTask class];
  [NSApplication sharedApplication];
#endif
}

// Without a window manager GNUstep takes the application to be inactive
// whenever one of its windows goes off screen (a closed panel, a folder
// chooser), and a panel that hides on deactivation would vanish with it.
static inline void KeepOnScreenWhenInactive(NSPanel *panel) {
#ifdef GNUSTEP
  [panel setHidesOnDeactivate:NO];
#endif
}

// GNUstep launches its helper daemons with NSTask, which takes over SIGCHLD
// for good; the host's interpreter then never hears of its own children ending
// and a script's `system` waits forever. Each stretch of toolkit work hands the
// signal back as it found it.
#ifdef GNUSTEP
class ChildSignalGuard {
public:
  ChildSignalGuard() { sigaction(SIGCHLD, nullptr, &saved_); }
  ~ChildSignalGuard() { sigaction(SIGCHLD, &saved_, nullptr); }
  ChildSignalGuard(const ChildSignalGuard &) = delete;
  ChildSignalGuard &operator=(const ChildSignalGuard &) = delete;

private:
  struct sigaction saved_;
};
#else
struct ChildSignalGuard {};
#endif
