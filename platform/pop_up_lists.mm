#import "platform/platform.h"

#ifdef GNUSTEP
#import "platform/x_windows.h"

// GNUstep shows an open combo box list in one shared pop-up window, which
// runs a loop of its own until a pick, a key or a press outside the list ends
// it (that press is used up). Here the loop also ends when the application
// loses the keys, and a press outside the application's windows reaches it.

static Class ListClass() {
  return objc_lookUpClass("GSComboWindow");
}

// The flag the list's own notices use to end its loop. Both callers run
// while the loop hands on an event (the press outside, the focus leaving the
// application), and the loop looks at the flag as that event is done.
static void EndLoop(id list) {
  SEL stop = NSSelectorFromString(@"onWindowEdited:");
  if ([list respondsToSelector:stop])
    [list performSelector:stop withObject:nil];
}

static IMP SuperMethod(SEL selector) {
  return class_getMethodImplementation(ListClass(), selector);
}

// Under a window manager the list's window is mapped some time after it is
// ordered front, and a window not yet on screen can't hold the pointer: each
// event the list handles tries again until it holds it. The X server lets the
// pointer go when the window goes off screen.
static bool holdsPointer = false;

static void HoldPointer(id list) {
  if (holdsPointer)
    return;
  holdsPointer = XGrabPointer(XDisplay(), XWindowOf(list), True,
                              ButtonPressMask | ButtonReleaseMask, GrabModeAsync, GrabModeAsync,
                              None, None, CurrentTime) == GrabSuccess;
  XFlush(XDisplay());
}

static void OrderFrontHoldingPointer(id list, SEL selector, id sender) {
  reinterpret_cast<void (*)(id, SEL, id)>(SuperMethod(selector))(list, selector, sender);
  holdsPointer = false;
  HoldPointer(list);
}

static void SendEventEndingOutside(id list, SEL selector, NSEvent *event) {
  NSEventType type = [event type];
  if ((type == NSLeftMouseDown || type == NSRightMouseDown) && [event window] == list &&
      !NSPointInRect([event locationInWindow], [[list contentView] frame])) {
    EndLoop(list);
    return;
  }
  reinterpret_cast<void (*)(id, SEL, NSEvent *)>(SuperMethod(selector))(list, selector, event);
  HoldPointer(list);
}

// The shared list window, made a list that holds the pointer while it shows,
// as other toolkits' lists do: a press outside the application's windows,
// which no window manager may turn into a change of focus, then comes to it
// and ends it rather than leaving it open.
static id SharedList() {
  Class listClass = ListClass();
  SEL shared = NSSelectorFromString(@"defaultPopUp");
  if (![listClass respondsToSelector:shared])
    return nil;
  id list = [listClass performSelector:shared];
  static const char *const name = "VOPPointerHoldingList";
  Class holding = objc_lookUpClass(name);
  if (!holding) {
    holding = objc_allocateClassPair(listClass, name, 0);
    class_addMethod(holding, @selector(orderFront:), (IMP)OrderFrontHoldingPointer, "v@:@");
    class_addMethod(holding, @selector(sendEvent:), (IMP)SendEventEndingOutside, "v@:@");
    objc_registerClassPair(holding);
  }
  object_setClass(list, holding);
  return list;
}

@interface VOPPopUpListEnder : NSObject {
  id list;
}
- (void)comboBoxWillPopUp:(NSNotification *)notification;
- (void)applicationDidResignActive:(NSNotification *)notification;
@end

@implementation VOPPopUpListEnder

// The list window is made when a list first opens; making it earlier would
// load its images while the panel is built.
- (void)comboBoxWillPopUp:(NSNotification *)notification {
  if (!list)
    list = SharedList();
}

// GNUstep hides the list with the application's panels, but its loop would go
// on and take the next press on the panel unseen: that click would be lost.
- (void)applicationDidResignActive:(NSNotification *)notification {
  // The list's combo box cell is set only while its loop runs.
  Ivar cell = class_getInstanceVariable(ListClass(), "_cell");
  if (list && cell && object_getIvar(list, cell))
    EndLoop(list);
}

@end

void EndPopUpListsAsOtherToolkitsDo() {
  static VOPPopUpListEnder *ender = nil;
  if (ender)
    return;
  // Lives as long as the process, which the notification center may call.
  ender = [[VOPPopUpListEnder alloc] init];
  NSNotificationCenter *center = [NSNotificationCenter defaultCenter];
  [center addObserver:ender
             selector:@selector(comboBoxWillPopUp:)
                 name:NSComboBoxWillPopUpNotification
               object:nil];
  [center addObserver:ender
             selector:@selector(applicationDidResignActive:)
                 name:NSApplicationDidResignActiveNotification
               object:nil];
}
#endif
