// Key presses as the toolkit receives them from the keyboard, for the driver's
// `key`: a name such as "Tab", "Return" or "v", with modifiers before it joined
// by "+" ("shift+Tab", "ctrl+v").
#pragma once

#import <AppKit/AppKit.h>

// The key's press for the window, or nil for a name it does not know.
NSEvent *KeyPressFor(NSString *name, NSWindow *window);

// The key's release, which follows its press.
NSEvent *KeyReleaseOf(NSEvent *press);
