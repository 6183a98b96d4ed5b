#import "panel/OptionsPanel.h"

#import "panel/radio_groups.h"

using namespace velmar;

@interface OptionsPanel (EnvironmentTabParts)
- (NSButton *)optionBox:(CGFloat)y title:(NSString *)title;
@end

@implementation OptionsPanel (EnvironmentTab)

- (NSArray *)buildEnvironmentControlsWithTexts:(NSArray *)texts font:(NSFont *)headingFont {
  NSBox *separator = MakeSeparator(NSMakeRect(190, 10, 10, 180));
  NSTextField *optionsHeading =
      MakeLabel(NSMakeRect(205, 180, 100, 50), [texts objectAtIndex:kOptionsHeading], headingFont);

  mySOLCButton = [self optionBox:150 title:[texts objectAtIndex:kSphericalLightsBox]];
  myCausticsCButton = [self optionBox:125 title:[texts objectAtIndex:kCausticsBox]];
  myClayCButton = [self optionBox:100 title:[texts objectAtIndex:kClayBox]];
  // Shown nowhere, so no view owns it: the controller keeps it alive itself.
  myGCCButton = [[self optionBox:0 title:[texts objectAtIndex:kCachingBox]] retain];
  myIBCButton = [self optionBox:75 title:[texts objectAtIndex:kInformationBarBox]];
  myTCCButton = [self optionBox:50 title:[texts objectAtIndex:kTranslucentColorBox]];
  myAMCButton = [self optionBox:25 title:[texts objectAtIndex:kAutomaticMaterialsBox]];

  NSTextField *backgroundHeading = MakeLabel(NSMakeRect(10, 180, 100, 50),
                                             [texts objectAtIndex:kBackgroundHeading], headingFont);
  RadioGeometry geometry = {NSMakeSize(5, 5), NSMakeSize(180, 18)};
  matrix = MakeRadioGroup(NSMakeRect(15, 130, 300, 50), 3, 1, ChoiceTitles(kBackgrounds, texts),
                          &geometry, nil, nullptr);

  NSTextField *brightnessHeading =
      MakeLabel(NSMakeRect(10, 85, 100, 50), [texts objectAtIndex:kBrightnessHeading], headingFont);
  NSTextField *intensityLabel =
      MakeLabel(NSMakeRect(10, 60, 100, 50), [texts objectAtIndex:kIntensityLabel], nil);
  NSTextField *exposureLabel =
      MakeLabel(NSMakeRect(10, 35, 100, 50), [texts objectAtIndex:kExposureLabel], nil);
  myIntensitySlider = MakeSlider(NSMakeRect(80, 40, 100, 50));
  myExposureSlider = MakeSlider(NSMakeRect(80, 15, 100, 50));
  NSButton *reset = MakePushButton(NSMakeRect(95, 0, 95, 30), [texts objectAtIndex:kResetButton],
                                   self, @selector(onResetClicked), NO);

  // The left column top to bottom, then the right one.
  environmentKeyOrder = [@[
    matrix, myIntensitySlider, myExposureSlider, reset, mySOLCButton, myCausticsCButton,
    myClayCButton, myIBCButton, myTCCButton, myAMCButton
  ] retain];
  return @[
    separator, optionsHeading, mySOLCButton, myCausticsCButton, myClayCButton, myIBCButton,
    myTCCButton, myAMCButton, backgroundHeading, matrix, brightnessHeading, intensityLabel,
    exposureLabel, myIntensitySlider, myExposureSlider, reset
  ];
}

- (NSButton *)optionBox:(CGFloat)y title:(NSString *)title {
  return MakeCheckBox(NSMakeRect(210, y, 100, 50), title);
}

@end
