#import "driver/find.h"

#import "driver/step.h"
#include "driver/control_names.h"

#include <objc/runtime.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace driver {

// How many letters must be added, dropped or changed to make one name the other.
static size_t EditDistance(const char *a, const char *b) {
  size_t lengthB = strlen(b);
  std::vector<size_t> row(lengthB + 1);
  for (size_t j = 0; j <= lengthB; ++j)
    row[j] = j;
  for (size_t i = 1; a[i - 1]; ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= lengthB; ++j) {
      size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
      diagonal = above;
    }
  }
  return row[lengthB];
}

// The readable names nearest to an unknown one, at most three.
static NSString *NearestNames(const char *name) {
  size_t best = SIZE_MAX;
  for (const ControlName &entry : kControlNames)
    best = std::min(best, EditDistance(name, entry.readable));
  NSMutableArray *nearest = [NSMutableArray array];
  for (const ControlName &entry : kControlNames)
    if (EditDistance(name, entry.readable) == best && [nearest count] < 3)
      [nearest addObject:[NSString stringWithUTF8String:entry.readable]];
  return [nearest componentsJoinedByString:@", "];
}

// Only an instance variable that holds a view is a control: reading any other
// as an object would crash.
id ControlNamed(const char *name) {
  id controller = Controller();
  Ivar ivar = class_getInstanceVariable([controller class], ControllerName(name));
  id view = ivar && ivar_getTypeEncoding(ivar)[0] == '@' ? object_getIvar(controller, ivar) : nil;
  if (![view isKindOfClass:[NSView class]])
    Refuse(@"no control named %s (nearest: %@)", name, NearestNames(name));
  return view;
}

id Control(VALUE name) {
  return ControlNamed(RSTRING_PTR(name));
}

NSTabView *Tabs() {
  return ControlNamed("tabs");
}

NSTabViewItem *TabAt(long index) {
  NSTabView *tabView = Tabs();
  if (index < 0 || index >= [tabView numberOfTabViewItems])
    Refuse(@"tabs has no tab %ld", index);
  return [tabView tabViewItemAtIndex:index];
}

NSWindow *ShownPanel(NSString *what) {
  NSWindow *window = PanelWindow();
  if (![window isVisible])
    Refuse(@"%@ is not on screen: the panel is closed", what);
  return window;
}

// A control on a tab that is not selected is refused with the tab's index,
// which choose_tab takes, and its label, which the user reads.
static void RefuseIfOnHiddenTab(NSView *view, NSString *what) {
  NSTabView *tabView = Tabs();
  for (NSTabViewItem *item in [tabView tabViewItems])
    if (item != [tabView selectedTabViewItem] && [view isDescendantOf:[item view]])
      Refuse(@"%@ is on tab %ld (\"%@\"), which is not showing", what,
             (long)[tabView indexOfTabViewItem:item], [item label]);
}

id Reachable(NSView *view, NSString *what) {
  ShownPanel(what);
  RefuseIfOnHiddenTab(view, what);
  if (![view window])
    Refuse(@"%@ is not on the window", what);
  if ([view isKindOfClass:[NSControl class]] && ![(NSControl *)view isEnabled])
    Refuse(@"%@ is disabled", what);
  return view;
}

id Actionable(VALUE name, Class kind, NSString *kindName) {
  const char *text = RSTRING_PTR(name);
  NSView *view = ControlNamed(text);
  NSString *what = [NSString stringWithUTF8String:text];
  if (![view isKindOfClass:kind])
    Refuse(@"%@ is not %@", what, kindName);
  return Reachable(view, what);
}

NSCell *CellAt(NSMatrix *group, long index, const char *name) {
  long columns = [group numberOfColumns];
  if (index < 0 || index >= [group numberOfRows] * columns)
    Refuse(@"%s has no cell %ld", name, index);
  return [group cellAtRow:index / columns column:index % columns];
}

NSView *PressableView(const char *name) {
  if (strcmp(name, kCloseBoxName) != 0)
    return ControlNamed(name);
  NSButton *closeBox = [PanelWindow() standardWindowButton:NSWindowCloseButton];
  if (!closeBox)
    Refuse(@"the title bar shows no close box");
  return closeBox;
}

} // namespace driver
