// What the extension exports to the code that loads it beside Ruby: the test
// driver and a host's event loop. Neither links the extension: they find its
// functions with dlsym and its controller class by name, so these
// declarations are the whole interface between them. docs/MACOS.md lists the
// same symbols, and test/test_exports.rb checks the built extension's dynamic
// symbol table against that list.
#pragma once

#include <ruby.h>

#include <dlfcn.h>

#define OPTIONS_PANEL_EXPORT extern "C" __attribute__((visibility("default")))

// Ruby calls it on `require "OptionsPanel"`.
OPTIONS_PANEL_EXPORT void Init_OptionsPanel();

// Lets a jump that an observer started during a user's action go on (see
// velmar::resume_held_jump): call between toolkit stretches, with no toolkit
// frame on the stack, under rb_protect.
OPTIONS_PANEL_EXPORT void OptionsPanel_resume_held_jump();

// Runs a user's action as a script call runs, its observers' exceptions held
// rather than reported; returns the first, or Qnil. Call with no toolkit frame
// on the stack: a jump left stale by an earlier action goes on first.
OPTIONS_PANEL_EXPORT VALUE OptionsPanel_hold_observer_errors(void (*action)(void *), void *context);

// For the test driver's reset: forgets every observer, then, once the panel is
// built, closes it unheard and puts every control back as it was built. Raises
// as a script method does.
OPTIONS_PANEL_EXPORT void OptionsPanel_reset();

// One of the functions above as found in the process, typed as declared
// there; nullptr while the extension is not loaded.
#define OPTIONS_PANEL_FIND(function)                                                               \
  reinterpret_cast<decltype(&function)>(dlsym(RTLD_DEFAULT, #function))

#ifdef __OBJC__
#import <AppKit/AppKit.h>

// The controller's class, for NSClassFromString.
#define OPTIONS_PANEL_CONTROLLER_CLASS @"OptionsPanel"

// What the controller class answers to for the driver.
@protocol VOPController
// The controller once built, else nil.
+ (instancetype)sharedController;
+ (BOOL)isBuilt;
// Handles the events already queued, without waiting: how a test driver lets the user act.
- (void)processEvents;
- (NSWindow *)window;
// The control that has the keyboard focus, a field being edited included; else nil.
- (NSView *)focusedControl;
@end
#endif
