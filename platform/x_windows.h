// The X back-end's connection and a window's X window, which GNUstep's display
// server hands out as opaque pointers.
#pragma once

#ifdef GNUSTEP
#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>

#include <X11/Xlib.h>

#include <cstdint>

static inline Display *XDisplay() {
  return static_cast<Display *>([GSCurrentServer() serverDevice]);
}

static inline Window XWindowOf(NSWindow *window) {
  return static_cast<Window>(
      reinterpret_cast<uintptr_t>([GSCurrentServer() windowDevice:[window windowNumber]]));
}

// Both, or false while the window has no X window yet.
static inline bool XWindowOn(NSWindow *window, Display **display, Window *xwindow) {
  *display = XDisplay();
  *xwindow = XWindowOf(window);
  return *display && *xwindow;
}
#endif
