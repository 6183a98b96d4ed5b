// The panel put back as it was built (docs/API.md, "A new panel"), for tests
// that must not inherit one another's panel: the test driver's reset asks
// for it, no script method does.
#import "panel/perform.h"

using namespace velmar;

panel::Outcome panel::reset_to_start() {
  const Option boxes[] = {
      Option::SphericalLights,   Option::Caustics,       Option::Clay,
      Option::Caching,           Option::InformationBar, Option::TranslucentColor,
      Option::AutomaticMaterials};
  for (Option box : boxes)
    set_option(box, false);
  const Outcome steps[] = {
      close(), clear_presets(), set_output_dimensions({SizeMode::Viewport, 0, 0, 0, 0, true}),
      set_output_format(ImageFormat::Png, false), set_output_directory(SaveLocation::Model, ""),
      set_background(Background::Default), set_slider(Slider::Intensity, kSliderStart),
      set_slider(Slider::Exposure, kSliderStart),
      // What no setter puts back: the empty fields, the transparency tick,
      // the tab shown and the place on the screen.
      Perform([](OptionsPanel *panel) {
        [panel->myWidthValueText setStringValue:@""];
        [panel->myHeightValueText setStringValue:@""];
        [panel->myTransCButton setState:NSControlStateValueOff];
        [panel->myTabView selectTabViewItemAtIndex:0];
        [[panel window] setFrameOrigin:NSMakePoint(300, 400)];
      })};
  for (const Outcome &step : steps)
    if (step.failed)
      return step;
  return Outcome();
}
