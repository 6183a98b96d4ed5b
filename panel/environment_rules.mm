#import "panel/OptionsPanel.h"

#import "panel/radio_groups.h"

using namespace velmar;
using panel::Option;
using panel::Slider;

@implementation OptionsPanel (Environment)

- (NSButton *)boxOfOption:(Option)option {
  switch (option) {
  case Option::SphericalLights:
    return mySOLCButton;
  case Option::Caustics:
    return myCausticsCButton;
  case Option::Clay:
    return myClayCButton;
  case Option::Caching:
    return myGCCButton;
  case Option::InformationBar:
    return myIBCButton;
  case Option::TranslucentColor:
    return myTCCButton;
  case Option::AutomaticMaterials:
    return myAMCButton;
  }
  return nil;
}

- (void)setOption:(Option)option on:(BOOL)on {
  [[self boxOfOption:option] setState:on ? NSControlStateValueOn : NSControlStateValueOff];
}

- (void)setBackground:(Background)background {
  SelectChoice(matrix, kBackgrounds, background);
}

- (void)setSlider:(Slider)slider value:(int32_t)value {
  // The slider pins the value to its range itself.
  [slider == Slider::Intensity ? myIntensitySlider : myExposureSlider setIntValue:value];
}

- (void)onResetClicked {
  [myIntensitySlider setIntValue:50];
  [myExposureSlider setIntValue:50];
}

@end
