#import "panel/OptionsPanel.h"

#import "panel/controls.h"

#include "panel/events.h"

using velmar::EventValues;
using velmar::send_event;

// Radio groups report by the word of the cell that is on; the last word needs no look.
static std::string WordOfGroup(NSMatrix *group, const char *first, const char *second,
                               const char *rest) {
  NSArray *cells = [group cells];
  if ([[cells objectAtIndex:0] state] == NSControlStateValueOn)
    return first;
  if ([[cells objectAtIndex:1] state] == NSControlStateValueOn)
    return second;
  return rest;
}

static int32_t StateOf(NSButton *box) {
  return (int32_t)[box state];
}

@implementation OptionsPanel (Apply)

- (void)onApplyClicked {
  // Read once, before any observer can change the list.
  NSInteger index = [myPresetCombo indexOfSelectedItem];
  std::string preset =
      index >= 0 ? Utf8FromNSString([myPresetCombo itemObjectValueAtIndex:index]) : std::string();
  send_event("preset_changed", {preset});

  std::string sizeMode = WordOfGroup(aImageSizeMatrix, "viewport", "fixed", "panorama");
  std::string width = Utf8FromNSString([myWidthValueText stringValue]);
  std::string height = Utf8FromNSString([myHeightValueText stringValue]);
  std::string folder = Utf8FromNSString([mySaveLocText stringValue]);
  std::string format = WordOfGroup(aImageTypeLMatrix, "png", "jpg", "hdr");
  if (format == "png" && [myTransCButton state] == NSControlStateValueOn)
    format = "pnga";
  std::string saveMode = WordOfGroup(aISLMatrix, "model", "custom", "custom");
  send_event("output_changed", {sizeMode, width, height, format, saveMode, folder, preset});

  std::string background = WordOfGroup(matrix, "default", "sky", "sky2");
  send_event("environment_changed",
             {background, StateOf(myClayCButton), StateOf(myCausticsCButton), StateOf(mySOLCButton),
              (int32_t)[myIntensitySlider intValue], (int32_t)[myExposureSlider intValue]});

  send_event("options_changed", {StateOf(myIBCButton), StateOf(myGCCButton), StateOf(myTCCButton),
                                 (int32_t)[myAMCButton intValue]});

  [[OptionsPanel sharedController] closePanel];
}

@end
