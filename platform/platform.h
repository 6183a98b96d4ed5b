// What differs between Apple's AppKit and GNUstep, kept in one place so the
// panel's sources read the same on both.
#pragma once

#import <AppKit/AppKit.h>
#include <objc/runtime.h>

#import "platform/appkit_names.h"

#ifdef GNUSTEP
#import <GNUstepGUI/GSTheme.h>
#endif

#include <signal.h>

#ifdef GNUSTEP
// GNUstep's combo box takes a text field delegate; Apple's names a protocol of its own.
@protocol NSComboBoxDelegate <NSTextFieldDelegate>
@end
// GNUstep declares the tab view's delegate methods informally, with no protocol.
@protocol NSTabViewDelegate <NSObject>
@end
#endif

// The tab views' frames were laid out for AppKit, whose tab view keeps about
// 42 points of its height for the tabs and the bezel: a 218-point tab view is
// fitted into a content area some 20 points shorter, and the radio groups,
// which keep their distance from the top, move down below their headings.
// GNUstep keeps only 19 points, so the groups would move up into their
// headings instead; this tab view gives its tabs AppKit's content height.
#ifdef GNUSTEP
@interface VOPPanelTabView : NSTabView
@end
#else
@compatibility_alias VOPPanelTabView NSTabView;
#endif

// The panel's window. On GNUstep it gives the controller the keys that move
// the focus, switch tabs and close the panel before the focused control sees
// them (platform/keyboard.mm says why), and its fields an editor that keeps
// to whole characters (platform/field_editor.mm); AppKit's own window and
// field editor do both.
#ifdef GNUSTEP
@interface VOPKeyPanel : NSPanel
@end
#else
@compatibility_alias VOPKeyPanel NSPanel;
#endif

// GNUstep draws a radio button's title two points after its circle, and a
// letter that reaches to the left, as the J of "JPEG" does, touches the
// circle; this cell leaves the title a little more room, as AppKit does.
#ifdef GNUSTEP
@interface VOPRadioButtonCell : NSButtonCell
@end
#else
@compatibility_alias VOPRadioButtonCell NSButtonCell;
#endif

// The keys that edit text on a Linux desktop (Ctrl+X, C, V, A, Z, Shift+Delete,
// Ctrl+Insert, Shift+Insert, and the command key's letters) for the field being
// edited, and a right click's menu of Cut, Copy, Paste and Select All on a
// field (platform/editing_keys.mm); YES when the event was one of them, or a
// chord that must type nothing. AppKit's host menu routes the command key's
// letters itself, and its field editor has that menu.
#ifdef GNUSTEP
BOOL HandleEditingEvent(NSWindow *window, NSEvent *event);
#endif

// A list (a non-editable combo box) that shows a focus frame while it has the
// focus, which GNUstep's does not; AppKit draws its focus ring itself.
#ifdef GNUSTEP
@interface VOPComboBox : NSComboBox
@end
#else
@compatibility_alias VOPComboBox NSComboBox;
#endif

// A text field that has that menu, made with it.
#ifdef GNUSTEP
@interface VOPTextField : NSTextField
@end
#else
@compatibility_alias VOPTextField NSTextField;
#endif

// GNUstep draws a slider's bar over the whole of a tall frame; AppKit draws a
// regular horizontal slider without tick marks 21 points high, whatever the frame.
static inline CGFloat NaturalSliderHeight(NSSliderCell *cell) {
#ifdef GNUSTEP
  (void)cell;
  return 21;
#else
  return [cell cellSize].height;
#endif
}

// GNUstep's slider cell draws no focus ring, unlike its other cells and
// AppKit's slider; this draws one around the bar when the slider has the focus
// (the slider redraws itself when it gains or loses it).
static inline void DrawMissingSliderFocusRing(NSRect bar, NSView *view) {
#ifdef GNUSTEP
  if ([[view window] firstResponder] == view && [[view window] isKeyWindow])
    // Around the bar rather than on its dark edge, where a dotted line would not show.
    [[GSTheme theme] drawFocusFrame:NSInsetRect(bar, 1, -3) view:view];
#else
  (void)bar;
  (void)view;
#endif
}

// The short image search: while a ShortImageSearch lives, GNUstep looks an
// image up as TIFF or PNG only (the toolkit's and themes' formats) rather than
// under each of the host's image types (some 250 with ImageMagick), which
// costs 20-40 ms for every theme image that has no file. The host's image
// classes are put back afterwards, in their order; images found stay cached.
#ifdef GNUSTEP
static id ToolkitImageTypes(id, SEL) {
  return [NSArray arrayWithObjects:@"tiff", @"png", nil];
}

// Made at run time: the extension, the driver and the host each compile this
// header, and one process may load all three; they share the one class.
static inline Class ToolkitImageRep() {
  static const char *const name = "VOPToolkitImageRep";
  Class cls = objc_lookUpClass(name);
  if (cls)
    return cls;
  cls = objc_allocateClassPair([NSBitmapImageRep class], name, 0);
  Class meta = object_getClass(cls);
  class_addMethod(meta, @selector(imageUnfilteredFileTypes), (IMP)ToolkitImageTypes, "@@:");
  class_addMethod(meta, @selector(imageFileTypes), (IMP)ToolkitImageTypes, "@@:");
  objc_registerClassPair(cls);
  return cls;
}

class ShortImageSearch {
public:
  // Each with a pool of its own: the guard may stand outside the caller's.
  ShortImageSearch() {
    @autoreleasepool {
      saved_ = [[NSImageRep registeredImageRepClasses] copy];
      for (Class cls in saved_)
        [NSImageRep unregisterImageRepClass:cls];
      [NSImageRep registerImageRepClass:ToolkitImageRep()];
    }
  }
  ~ShortImageSearch() {
    @autoreleasepool {
      // Registering appends: the host's classes go back in their order.
      [NSImageRep unregisterImageRepClass:ToolkitImageRep()];
      for (Class cls in saved_)
        [NSImageRep registerImageRepClass:cls];
      [saved_ release];
    }
  }
  ShortImageSearch(const ShortImageSearch &) = delete;
  ShortImageSearch &operator=(const ShortImageSearch &) = delete;

private:
  NSArray *saved_;
};
#else
// AppKit's image search needs no help. A constructor of its own keeps a guard
// that does nothing from counting as an unused variable.
struct ShortImageSearch {
  ShortImageSearch() {}
};
#endif

// A push button finds the images of a look (lit, focused, disabled) when it
// first draws it, which may be long after the short image search has ended
// and would map ImageMagick's coders into the host (12 MiB). So one push
// button draws its other looks once now, into an image that is thrown away,
// and the theme keeps the images for all of them. (Check boxes and radio
// buttons draw every look with images that their first drawing finds.)
static inline void FindPushButtonImages(NSButton *button) {
#ifdef GNUSTEP
  NSButtonCell *cell = [button cell];
  NSRect bounds = [button bounds];
  NSImage *scratch = [[NSImage alloc] initWithSize:bounds.size];
  [scratch lockFocus];
  for (int look = GSThemeNormalState + 1; look <= GSThemeSelectedState; ++look)
    [[GSTheme theme] drawButton:bounds
                             in:cell
                           view:button
                          style:[cell bezelStyle]
                          state:(GSThemeControlState)look];
  [scratch unlockFocus];
  [scratch release];
#else
  (void)button;
#endif
}

// A host has made the application object long before any plugin runs; a plain
// interpreter has not, and GNUstep needs it before the first window. NSTask
// takes SIGCHLD when its class first initialises; doing that here, inside a
// HostSignalsGuard, hands the signal back before any task is launched.
static inline void EnsureApplicationObject() {
#ifdef GNUSTEP
  [NSTask class];
  ShortImageSearch imageSearch;
  // GNUstep shows its application icon in a window of its own, which a window
  // manager lists and places beside the panel. An application object of ours
  // goes without one unless the user's defaults ask for it; a host's own is
  // left as the host made it.
  if (!NSApp)
    [[NSUserDefaults standardUserDefaults]
        registerDefaults:@{@"GSSuppressAppIcon" : [NSNumber numberWithBool:YES]}];
  [NSApplication sharedApplication];
#endif
}

// Works around two ways in which GNUstep's X back-end loses a press or a
// release that a person gives (platform/real_input.mm says how); once per
// process, before the first press reaches the panel.
void PrepareRealInput();

// GNUstep drops an invalidated timer from a run-loop mode only when that mode
// runs. The field editor schedules its cursor-blink timer in the modal-panel
// mode too, which runs only while a modal panel is up, so every edit of a
// field would leave its timer there for good and each turn of a modal session
// would walk them all. Asking that mode for its limit date drops them.
static inline void DropFinishedTimers() {
#ifdef GNUSTEP
  [[NSRunLoop currentRunLoop] limitDateForMode:NSModalPanelRunLoopMode];
#endif
}

// The modal-panel level keeps the panel above other windows on AppKit; under
// an X window manager the panel asks for it, to be listed where a person
// switches windows, and for no maximise button (platform/window_manager.mm).
void SetPanelWindowManagerHints(NSWindow *window);

// Brings the folder chooser on screen over the panel, where a window manager
// keeps it above the panel and may close it as a cancel; runModal then runs it.
void ShowChooserOver(NSSavePanel *chooser, NSWindow *panel);

// With no window manager to hand the focus on, GNUstep leaves no window with
// the keys once a modal chooser closes; the panel, if still open, takes them.
static inline void TakeKeysBackAfterChooser(NSWindow *panel) {
#ifdef GNUSTEP
  if ([panel isVisible])
    [panel makeKeyAndOrderFront:nil];
#else
  (void)panel;
#endif
}

// Without a window manager GNUstep takes the application to be inactive
// whenever one of its windows goes off screen (a closed panel, a folder
// chooser), and a panel that hides on deactivation would vanish with it.
static inline void KeepOnScreenWhenInactive(NSPanel *panel) {
#ifdef GNUSTEP
  [panel setHidesOnDeactivate:NO];
#else
  (void)panel;
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
// AppKit leaves the host's signals alone (see ShortImageSearch for the constructor).
struct HostSignalsGuard {
  HostSignalsGuard() {}
};
#endif
