// The panel's window and the process as a whole: whether the panel is built,
// shown and drawn, its level, the image types and run-loop timers the process
// holds, and screenshots.
#import "driver/functions.h"

#import "platform/platform.h"

#include <objc/runtime.h>

namespace driver {

// On screen with every view drawn: what a user sees once showing has finished.
static VALUE drawn(VALUE) {
  return Drive([] {
    NSWindow *window = PanelWindow();
    return (id)Flag([window isVisible] && ![window viewsNeedDisplay]);
  });
}

static VALUE window_state(VALUE) {
  return Drive([] {
    NSWindow *window = PanelWindow();
    return (id) @{
      @"visible" : Flag([window isVisible]),
      @"key" : Flag([window isKeyWindow]),
      @"active" : Flag([NSApp isActive]),
      @"level" : @([window level]),
      @"title" : [window title],
      @"frame" : RectArray([window frame]),
      @"content" : RectArray([[window contentView] frame]),
      @"screen" : RectArray([[window screen] visibleFrame]),
      @"style" : @([window styleMask]),
      @"panel" : Flag([window isKindOfClass:[NSPanel class]])
    };
  });
}

static VALUE built(VALUE) {
  return Drive([] {
    Class<VOPController> cls = ControllerClass();
    return (id)Flag(cls && [cls isBuilt]);
  });
}

// The image file types the process can read: the host's, whatever the panel
// does to find its own images faster.
static VALUE image_types(VALUE) {
  return Drive([] { return (id)ReadableImageTypes(); });
}

// How many timers each mode of the main run loop holds, invalidated ones
// included until the mode runs again and drops them. GNUstep has no public way
// to ask: this reads its run loop's per-mode contexts and their timer arrays.
static NSDictionary *TimersByMode() {
  NSMutableDictionary *counts = [NSMutableDictionary dictionary];
#ifdef GNUSTEP
  NSRunLoop *loop = [NSRunLoop currentRunLoop];
  Ivar contexts = class_getInstanceVariable([NSRunLoop class], "_contextMap");
  NSMapTable *map = (NSMapTable *)object_getIvar(loop, contexts);
  for (id context in NSAllMapTableValues(map)) {
    Ivar mode = class_getInstanceVariable([context class], "mode");
    Ivar timers = class_getInstanceVariable([context class], "timers");
    if (!mode || !timers)
      continue;
    // A GSIArray: a pointer to its items, then its count.
    struct Timers {
      void *items;
      unsigned count;
    };
    Timers *array =
        *reinterpret_cast<Timers **>(reinterpret_cast<char *>(context) + ivar_getOffset(timers));
    [counts setObject:@(array ? array->count : 0) forKey:object_getIvar(context, mode)];
  }
#endif
  return counts;
}

static VALUE run_loop_timers(VALUE) {
  return Drive([] { return (id)TimersByMode(); });
}

static VALUE modal_panel_level(VALUE) {
  return Drive([] { return (id) @(NSModalPanelWindowLevel); });
}

static NSNumber *SavePicture(NSView *view, const char *file) {
  [PanelWindow() display];
  NSBitmapImageRep *image = [view bitmapImageRepForCachingDisplayInRect:[view bounds]];
  [view cacheDisplayInRect:[view bounds] toBitmapImageRep:image];
  NSData *png = [image representationUsingType:NSBitmapImageFileTypePNG properties:@{}];
  NSString *path = [NSString stringWithUTF8String:file];
  BOOL isFolder = NO;
  // Checked first: the toolkit prints a line of its own when it cannot write.
  if (![[NSFileManager defaultManager] fileExistsAtPath:[path stringByDeletingLastPathComponent]
                                            isDirectory:&isFolder] ||
      !isFolder || ![png writeToFile:path atomically:YES])
    Refuse(@"cannot write the screenshot to %@", path);
  return Flag(YES);
}

static VALUE screenshot(VALUE, VALUE path) {
  const char *file = StringValueCStr(path);
  return Drive([=] { return (id)SavePicture([PanelWindow() contentView], file); });
}

// With the title bar, where GNUstep draws it itself (GSBackHandlesWindowDecorations
// NO); otherwise the same as screenshot.
static VALUE screenshot_window(VALUE, VALUE path) {
  const char *file = StringValueCStr(path);
  return Drive([=] {
    NSView *content = [PanelWindow() contentView];
    return (id)SavePicture([content superview] ?: content, file);
  });
}

static const Function kDiagnosticsFunctions[] = {
    {"drawn?", DRIVER_FUNCTION(drawn), 0},
    {"window_state", DRIVER_FUNCTION(window_state), 0},
    {"built?", DRIVER_FUNCTION(built), 0},
    {"modal_panel_level", DRIVER_FUNCTION(modal_panel_level), 0},
    {"image_types", DRIVER_FUNCTION(image_types), 0},
    {"run_loop_timers", DRIVER_FUNCTION(run_loop_timers), 0},
    {"screenshot", DRIVER_FUNCTION(screenshot), 1},
    {"screenshot_window", DRIVER_FUNCTION(screenshot_window), 1},
};
const FunctionGroup kDiagnostics = Group(kDiagnosticsFunctions);

} // namespace driver
