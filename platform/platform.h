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
// HostSignalsGuard, hands the signal back before any task is launched.
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

// GNUstep takes over signals that belong to the host: NSTask reaps every child
// on SIGCHLD (a script's `system` then waits forever), and the display code
// swallows SIGINT and SIGTERM (Ctrl-C no longer stops the interpreter). Each
// stretch of toolkit work hands them back as it found them.
#ifdef GNUSTEP
class HostSignalsGuard {
public:
  HostSignalsGuard() {
    for (size_t i = 0; i < kCount; ++i)
      sigaction(kSignals[i], nullptr, &saved_[i]);
  }
  ~HostSignalsGuard() {
    for (size_t i = 0; i < kCount; ++i)
      sigaction(kSignals[i], &saved_[i], nullptr);
  }
  HostSignalsGuard(const HostSignalsGuard &) = delete;
  HostSignalsGuard &operator=(const HostSignalsGuard &) = delete;

private:
  static constexpr int kSignals[] = {SIGCHLD, SIGINT, SIGTERM};
  static constexpr size_t kCount = sizeof(kSignals) / sizeof(kSignals[0]);
  struct sigaction saved_[kCount];
};
#else
struct HostSignalsGuard {};
#endif
