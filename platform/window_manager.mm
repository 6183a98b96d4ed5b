#import "platform/platform.h"

#ifdef GNUSTEP
#import "platform/x_windows.h"

#include <X11/Xatom.h>

static bool HasState(Display *display, Window xwindow, Atom state, Atom wanted) {
  Atom type = None;
  int format = 0;
  unsigned long count = 0, after = 0;
  unsigned char *data = nullptr;
  bool found = false;
  if (XGetWindowProperty(display, xwindow, state, 0, 64, False, XA_ATOM, &type, &format, &count,
                         &after, &data) == Success &&
      data && format == 32) {
    // Xlib hands 32-bit items out as longs.
    const Atom *atoms = reinterpret_cast<const Atom *>(data);
    for (unsigned long i = 0; i < count && !found; ++i)
      found = atoms[i] == wanted;
  }
  if (data)
    XFree(data);
  return found;
}

// GNUstep maps its modal-panel level to an ordinary window type with no state
// that keeps it up: a window manager stacks such a window under whatever the
// user clicks next. The window manager reads _NET_WM_STATE_ABOVE from the
// window's property when it takes the window on, and from a message to the
// root window once it has; both are sent, since the window may be between
// the two while a map request is on its way.
static void AddAboveState(NSWindow *window) {
  Display *display = XDisplay();
  Window xwindow = XWindowOf(window);
  if (!display || !xwindow)
    return;
  Atom state = XInternAtom(display, "_NET_WM_STATE", False);
  Atom above = XInternAtom(display, "_NET_WM_STATE_ABOVE", False);

  XWindowAttributes attributes;
  if (XGetWindowAttributes(display, xwindow, &attributes) && attributes.map_state != IsViewable &&
      !HasState(display, xwindow, state, above))
    XChangeProperty(display, xwindow, state, XA_ATOM, 32, PropModeAppend,
                    reinterpret_cast<unsigned char *>(&above), 1);

  XEvent event = {};
  event.xclient.type = ClientMessage;
  event.xclient.window = xwindow;
  event.xclient.message_type = state;
  event.xclient.format = 32;
  event.xclient.data.l[0] = 1; // _NET_WM_STATE_ADD
  event.xclient.data.l[1] = static_cast<long>(above);
  event.xclient.data.l[3] = 1; // from an application
  XSendEvent(display, DefaultRootWindow(display), False,
             SubstructureRedirectMask | SubstructureNotifyMask, &event);
  XFlush(display);
}

static void OfferDeleteWindow(NSWindow *window) {
  Display *display = XDisplay();
  Window xwindow = XWindowOf(window);
  if (!display || !xwindow)
    return;
  Atom deleteWindow = XInternAtom(display, "WM_DELETE_WINDOW", False);
  Atom *protocols = nullptr;
  int count = 0;
  XGetWMProtocols(display, xwindow, &protocols, &count);
  Atom offered[16];
  int n = 0;
  bool found = false;
  for (int i = 0; i < count && n < 15; ++i) {
    found = found || protocols[i] == deleteWindow;
    offered[n++] = protocols[i];
  }
  if (protocols)
    XFree(protocols);
  if (found)
    return;
  offered[n++] = deleteWindow;
  XSetWMProtocols(display, xwindow, offered, n);
}
#endif

void KeepAboveOtherWindows(NSWindow *window) {
#ifdef GNUSTEP
  AddAboveState(window);
#else
  (void)window;
#endif
}

void ShowChooserOver(NSSavePanel *chooser, NSWindow *panel) {
#ifdef GNUSTEP
  // GNUstep's chooser has no close box, so its window does not offer the
  // window manager WM_DELETE_WINDOW, and the window manager's close kills the
  // whole X client: the host with it. GNUstep 0.29 has no -setStyleMask:; key
  // value coding sets the style itself, which the back-end reads when it
  // makes the chooser's X window and the window reads when asked to close.
  // The modal session ends when its window goes away, and runModal answers
  // that as no choice.
  [chooser
      setValue:[NSNumber numberWithUnsignedInteger:[chooser styleMask] | NSWindowStyleMaskClosable]
        forKey:@"styleMask"];

  // GNUstep centres a modal panel on the screen unless it is already on
  // screen: shown first, centred over the panel, it stays there.
  NSRect over = [panel frame];
  NSSize size = [chooser frame].size;
  NSRect screen = [[panel screen] ?: [NSScreen mainScreen] visibleFrame];
  NSPoint origin = NSMakePoint(NSMidX(over) - size.width / 2, NSMidY(over) - size.height / 2);
  origin.x = MAX(NSMinX(screen), MIN(origin.x, NSMaxX(screen) - size.width));
  origin.y = MAX(NSMinY(screen), MIN(origin.y, NSMaxY(screen) - size.height));
  [chooser setFrameOrigin:origin];
  [chooser orderFront:nil];
  // A chooser the host showed earlier has its X window already, made without.
  OfferDeleteWindow(chooser);

  // Kept above the panel, which itself stays above other windows: a window
  // manager stacks a transient window over the one it belongs to.
  [GSCurrentServer() setParentWindow:[panel windowNumber] forChildWindow:[chooser windowNumber]];
  AddAboveState(chooser);
#else
  (void)chooser;
  (void)panel;
#endif
}
