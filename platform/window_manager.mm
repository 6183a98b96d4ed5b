#import "platform/platform.h"

#ifdef GNUSTEP
#import "platform/x_windows.h"

#include <X11/Xatom.h>

#include <algorithm>
#include <vector>

// The window's _NET_WM_STATE atoms, from its property.
static std::vector<Atom> States(Display *display, Window xwindow, Atom state) {
  Atom type = None;
  int format = 0;
  unsigned long count = 0, after = 0;
  unsigned char *data = nullptr;
  std::vector<Atom> states;
  if (XGetWindowProperty(display, xwindow, state, 0, 64, False, XA_ATOM, &type, &format, &count,
                         &after, &data) == Success &&
      data && format == 32) {
    // Xlib hands 32-bit items out as longs.
    const Atom *atoms = reinterpret_cast<const Atom *>(data);
    states.assign(atoms, atoms + count);
  }
  if (data)
    XFree(data);
  return states;
}

// A window manager reads a window's states from its property when it takes
// the window on, and from a message to the root window once it has; both are
// changed, since the window may be between the two while a map request is on
// its way.
static void ChangeState(NSWindow *window, const char *name, bool add) {
  Display *display = nullptr;
  Window xwindow = None;
  if (!XWindowOn(window, &display, &xwindow))
    return;
  Atom state = XInternAtom(display, "_NET_WM_STATE", False);
  Atom changed = XInternAtom(display, name, False);

  XWindowAttributes attributes;
  if (XGetWindowAttributes(display, xwindow, &attributes) && attributes.map_state != IsViewable) {
    std::vector<Atom> states = States(display, xwindow, state);
    states.erase(std::remove(states.begin(), states.end(), changed), states.end());
    if (add)
      states.push_back(changed);
    XChangeProperty(display, xwindow, state, XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<unsigned char *>(states.data()),
                    static_cast<int>(states.size()));
  }

  XEvent event = {};
  event.xclient.type = ClientMessage;
  event.xclient.window = xwindow;
  event.xclient.message_type = state;
  event.xclient.format = 32;
  event.xclient.data.l[0] = add ? 1 : 0; // _NET_WM_STATE_ADD or _REMOVE
  event.xclient.data.l[1] = static_cast<long>(changed);
  event.xclient.data.l[3] = 1; // from an application
  XSendEvent(display, DefaultRootWindow(display), False,
             SubstructureRedirectMask | SubstructureNotifyMask, &event);
  XFlush(display);
}

// GNUstep maps its modal-panel level to an ordinary window type with no state
// that keeps it up: a window manager stacks such a window under whatever the
// user clicks next.
static void AddAboveState(NSWindow *window) {
  ChangeState(window, "_NET_WM_STATE_ABOVE", true);
}

// GNUstep asks the window manager to leave a panel out of the taskbar and
// the pager, like a tool palette. Our panel belongs to no window of the host,
// and some window managers' Alt+Tab lists no window that skips the taskbar:
// a person who switched away could not find the panel again. Listed, it can
// be found under every window manager.
static void ListInWindowSwitchers(NSWindow *window) {
  ChangeState(window, "_NET_WM_STATE_SKIP_TASKBAR", false);
  ChangeState(window, "_NET_WM_STATE_SKIP_PAGER", false);
}

// The window manager learns from the window's Motif hints which of its
// actions apply: a dialog of a fixed size is moved and closed. GNUstep's own
// hints say so while the window manager draws the title bar, and name no
// action at all when GNUstep draws its own (GSBackHandlesWindowDecorations NO).
static void OfferMoveAndCloseOnly(Display *display, Window xwindow) {
  Atom hintsAtom = XInternAtom(display, "_MOTIF_WM_HINTS", False);
  // flags, functions, decorations, input mode, status: as longs, Xlib's 32-bit items.
  long hints[5] = {0, 0, 0, 0, 0};
  Atom type = None;
  int format = 0;
  unsigned long count = 0, after = 0;
  unsigned char *data = nullptr;
  if (XGetWindowProperty(display, xwindow, hintsAtom, 0, 5, False, AnyPropertyType, &type, &format,
                         &count, &after, &data) == Success &&
      data && format == 32)
    std::copy(reinterpret_cast<long *>(data), reinterpret_cast<long *>(data) + std::min(count, 5ul),
              hints);
  if (data)
    XFree(data);
  const long kFunctionsGiven = 1, kMove = 4, kClose = 32;
  hints[0] |= kFunctionsGiven;
  hints[1] = kMove | kClose;
  XChangeProperty(display, xwindow, hintsAtom, hintsAtom, 32, PropModeReplace,
                  reinterpret_cast<unsigned char *>(hints), 5);
  XFlush(display);
}

// The chooser is one shared window. Under a window manager that decorates it,
// GNUstep sized its X window to the content at the first showing but to the
// whole frame, title bar and borders included, at every later one, leaving a
// black band under the title bar. Its X window is made anew for each showing,
// as at the first, and with the style set here. (The toolkit's own way to drop
// a window's X window has no public name; a toolkit without it keeps the old.)
static void MakeFreshXWindowAtNextShowing(NSWindow *window) {
  SEL forget = NSSelectorFromString(@"_terminateBackendWindow");
  if ([window windowNumber] && [window respondsToSelector:forget])
    [window performSelector:forget];
}
#endif

void SetPanelWindowManagerHints(NSWindow *window) {
#ifdef GNUSTEP
  AddAboveState(window);
  ListInWindowSwitchers(window);
  Display *display = nullptr;
  Window xwindow = None;
  if (XWindowOn(window, &display, &xwindow))
    OfferMoveAndCloseOnly(display, xwindow);
#else
  (void)window;
#endif
}

void ShowChooserOver(NSSavePanel *chooser, NSWindow *panel) {
#ifdef GNUSTEP
  // Without a close box the chooser does not offer WM_DELETE_WINDOW, and the
  // window manager's close would kill the whole host. GNUstep 0.29 has no
  // -setStyleMask:, so key-value coding sets the style before the X window is
  // made. Closed so, the modal session ends and runModal answers no choice.
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
  MakeFreshXWindowAtNextShowing(chooser);
  [chooser setFrameOrigin:origin];
  [chooser orderFront:nil];

  // Kept above the panel, which itself stays above other windows: a window
  // manager stacks a transient window over the one it belongs to.
  [GSCurrentServer() setParentWindow:[panel windowNumber] forChildWindow:[chooser windowNumber]];
  AddAboveState(chooser);
#else
  (void)chooser;
  (void)panel;
#endif
}
