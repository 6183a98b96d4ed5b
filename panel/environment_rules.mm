#import "panel/perform.h"
#import "panel/radio_groups.h"

using namespace velmar;
using panel::Option;
using panel::Slider;

static NSButton *BoxOfOption(OptionsPanel *panel, Option option) {
  switch (option) {
  case Option::SphericalLights:
    return panel->mySOLCButton;
  case Option::Caustics:
    return panel->myCausticsCButton;
  case Option::Clay:
    return panel->myClayCButton;
  case Option::Caching:
    return panel->myGCCButton;
  case Option::InformationBar:
    return panel->myIBCButton;
  case Option::TranslucentColor:
    return panel->myTCCButton;
  case Option::AutomaticMaterials:
    return panel->myAMCButton;
  }
  return nil;
}

@implementation OptionsPanel (Environment)

- (void)onResetClicked {
  [myIntensitySlider setIntValue:kSliderStart];
  [myExposureSlider setIntValue:kSliderStart];
}

@end

panel::Outcome panel::set_option(Option option, bool on) {
  return Perform([=](OptionsPanel *panel) {
    [BoxOfOption(panel, option) setState:on ? NSControlStateValueOn : NSControlStateValueOff];
  });
}

panel::Outcome panel::set_background(Background background) {
  return Perform(
      [=](OptionsPanel *panel) { SelectChoice(panel->matrix, kBackgrounds, background); });
}

panel::Outcome panel::set_slider(Slider slider, int32_t value) {
  return Perform([=](OptionsPanel *panel) {
    // The slider pins the value to its range itself.
    [slider == Slider::Intensity ? panel->myIntensitySlider : panel->myExposureSlider
        setIntValue:value];
  });
}
