#include "panel/panel_api.h"

#import "panel/OptionsPanel.h"
#import "panel/controls.h"

namespace velmar {
namespace panel {

// The one controller, kept once built: the panel is never torn down, and
// looking the class up by name on every script call would cost more than most
// calls' own work.
static OptionsPanel *builtController = nil;

static Class PoolClass() {
  static Class pool = [NSAutoreleasePool class];
  return pool;
}

// Runs one operation on the controller: inside its own autorelease pool, with
// any toolkit exception stopped here and handed back as a value. A C++
// exception (no memory) goes on to the binding's guard, past a drained pool.
template <typename Operation> static Outcome Perform(Operation operation) {
  Outcome outcome;
  NSAutoreleasePool *pool = [PoolClass() new];
  try {
    @try {
      operation(builtController);
    } @catch (NSException *exception) {
      outcome.failed = true;
      outcome.failure =
          ToolkitFailure{Utf8FromNSString([exception name]), Utf8FromNSString([exception reason])};
    }
  } catch (...) {
    [pool drain];
    throw;
  }
  [pool drain];
  return outcome;
}

// For the calls that start the toolkit or put windows on and off screen: there
// GNUstep installs its own signal handlers and looks up the images it draws.
template <typename Operation> static Outcome PerformWindowing(Operation operation) {
  HostSignalsGuard hostSignals;
  ShortImageSearch imageSearch;
  return Perform(operation);
}

// The first message to the class initialises it, which may autorelease.
bool is_built() {
  if (builtController)
    return true;
  @autoreleasepool {
    return [OptionsPanel isBuilt];
  }
}

Outcome fetch(const PanelTexts &texts) {
  return PerformWindowing([&](OptionsPanel *) {
    builtController = [OptionsPanel sharedControllerWithTexts:texts];
    // The panel is on screen; its first drawing looks up the control images,
    // which must happen here, inside the short image search, and not at the
    // host's next turn of its event loop, where a setter that built the panel
    // would leave it.
    [[builtController window] displayIfNeeded];
  });
}

Outcome show() {
  return PerformWindowing([](OptionsPanel *controller) { [controller showPanel]; });
}

Outcome close() {
  return PerformWindowing([](OptionsPanel *controller) { [controller closePanel]; });
}

Outcome remember_viewport_width(int32_t width) {
  return Perform([=](OptionsPanel *controller) { [controller rememberViewportWidth:width]; });
}

Outcome remember_viewport_height(int32_t height) {
  return Perform([=](OptionsPanel *controller) { [controller rememberViewportHeight:height]; });
}

Outcome set_output_dimensions(SizeMode mode, int32_t width, int32_t height) {
  return Perform(
      [=](OptionsPanel *controller) { [controller setSizeMode:mode width:width height:height]; });
}

Outcome set_output_format(ImageFormat format, bool tick_transparency) {
  return Perform([=](OptionsPanel *controller) {
    [controller setFormat:format tickingTransparency:tick_transparency];
  });
}

Outcome set_output_directory(SaveLocation location, const std::string &folder) {
  return Perform([&](OptionsPanel *controller) {
    [controller setSaveLocation:location folder:NSStringFromUtf8(folder)];
  });
}

Outcome set_option(Option option, bool on) {
  return Perform([=](OptionsPanel *controller) { [controller setOption:option on:on]; });
}

Outcome set_background(Background background) {
  return Perform([=](OptionsPanel *controller) { [controller setBackground:background]; });
}

Outcome set_slider(Slider slider, int32_t value) {
  return Perform([=](OptionsPanel *controller) { [controller setSlider:slider value:value]; });
}

Outcome populate_presets(const std::string &joined_names) {
  return Perform([&](OptionsPanel *controller) { [controller populatePresets:joined_names]; });
}

Outcome select_preset(const std::string &name) {
  return Perform([&](OptionsPanel *controller) { [controller selectPreset:name]; });
}

} // namespace panel
} // namespace velmar
