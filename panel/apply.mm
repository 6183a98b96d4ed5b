#import "panel/OptionsPanel.h"

#import "panel/radio_groups.h"

#include "panel/events.h"

using namespace velmar;

static int32_t StateOf(NSButton *box) {
  return (int32_t)[box state];
}

@interface OptionsPanel (ApplyParts)
- (void)sendChoices;
@end

@implementation OptionsPanel (Apply)

- (void)onApplyClicked {
  [self sendChoices];
  // Only once the choices' texts are gone: where Objective-C exceptions are
  // setjmp-based (32-bit macOS), one raised while closing would skip their
  // destructors on its way to the caller's @catch.
  [self closePanel];
}

// Reads the controls (which raise nothing) and tells the observers.
- (void)sendChoices {
  // Read once, before any observer can change the list.
  NSInteger index = [myPresetCombo indexOfSelectedItem];
  std::string preset =
      index >= 0 ? Utf8FromNSString([myPresetCombo itemObjectValueAtIndex:index]) : std::string();
  send_event(Event::PresetChanged, {preset});

  std::string sizeMode = OnWord(aImageSizeMatrix, kSizeModes);
  std::string width = Utf8FromNSString([myWidthValueText stringValue]);
  std::string height = Utf8FromNSString([myHeightValueText stringValue]);
  std::string folder = Utf8FromNSString([mySaveLocText stringValue]);
  std::string format = [self formatWord];
  std::string saveMode = OnWord(aISLMatrix, kSaveLocations);
  send_event(Event::OutputChanged, {sizeMode, width, height, format, saveMode, folder, preset});

  std::string background = OnWord(matrix, kBackgrounds);
  send_event(Event::EnvironmentChanged,
             {background, StateOf(myClayCButton), StateOf(myCausticsCButton), StateOf(mySOLCButton),
              (int32_t)[myIntensitySlider intValue], (int32_t)[myExposureSlider intValue]});

  send_event(Event::OptionsChanged, {StateOf(myIBCButton), StateOf(myGCCButton),
                                     StateOf(myTCCButton), (int32_t)[myAMCButton intValue]});
}

@end
