// Finding the panel's controls as a user finds them: by name, on screen, on
// the tab that shows, enabled. Every refusal names the control.
#pragma once

#import <AppKit/AppKit.h>

#include <ruby.h>

namespace driver {

// The control the controller keeps under `name` (a readable name of
// control_names.h, or the controller's own); refused with the nearest names.
id ControlNamed(const char *name);
// `name` is a String made by Name().
id Control(VALUE name);

// The tab view, and one of its tabs by index.
NSTabView *Tabs();
NSTabViewItem *TabAt(long index);

// The panel's window, refused unless it is on screen: a user can act only then.
NSWindow *ShownPanel(NSString *what);
// A user acts only on what shows: a control of the panel on screen, on the
// tab that is selected, and enabled. `what` names it in the refusal.
id Reachable(NSView *view, NSString *what);
// The named control, of the kind the step acts on, where the user can reach it.
id Actionable(VALUE name, Class kind, NSString *kindName);
// Cell `index` of a radio group, counted in the order of its cells.
NSCell *CellAt(NSMatrix *group, long index, const char *name);
// A control by its name, or the title bar's close box, which the controller has no name for.
NSView *PressableView(const char *name);

} // namespace driver
