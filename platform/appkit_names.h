// AppKit renamed these constants in macOS 10.12 and deprecated the old names;
// GNUstep 0.29 knows only the old ones. The panel uses the current names, which
// stand here for GNUstep's, with the same values.
#pragma once

#import <AppKit/AppKit.h>

#ifdef GNUSTEP
static const NSEventMask NSEventMaskAny = NSAnyEventMask;
static const NSBezelStyle NSBezelStyleRounded = NSRoundedBezelStyle;
static const NSButtonType NSButtonTypeSwitch = NSSwitchButton;
static const NSButtonType NSButtonTypeRadio = NSRadioButton;
static const NSBitmapImageFileType NSBitmapImageFileTypePNG = NSPNGFileType;
static const NSEventType NSEventTypeKeyDown = NSKeyDown;
static const NSEventType NSEventTypeKeyUp = NSKeyUp;
static const NSEventModifierFlags NSEventModifierFlagShift = NSShiftKeyMask;
static const NSEventModifierFlags NSEventModifierFlagOption = NSAlternateKeyMask;
static const NSEventModifierFlags NSEventModifierFlagCommand = NSCommandKeyMask;
static const NSEventModifierFlags NSEventModifierFlagControl = NSControlKeyMask;
static const NSEventModifierFlags NSEventModifierFlagFunction = NSFunctionKeyMask;
#endif

// The image types the application can read: AppKit names them by uniform type
// identifier and deprecated the list of file name extensions in 10.10, the
// only list GNUstep has.
static inline NSArray *ReadableImageTypes() {
#ifdef GNUSTEP
  return [NSImage imageFileTypes];
#else
  return [NSImage imageTypes];
#endif
}
