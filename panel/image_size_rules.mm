#import "panel/perform.h"

#import "panel/radio_groups.h"

#include <climits>

using namespace velmar;

static NSString *Decimal(int32_t value) {
  return [NSString stringWithFormat:@"%d", value];
}

// Doubling a height must not overflow: the width saturates at the largest value.
static int32_t Doubled(int32_t height) {
  return height > INT32_MAX / 2 ? INT32_MAX : height * 2;
}

@implementation OptionsPanel (ImageSize)

- (BOOL)panoramaIsOn {
  return OnChoice(aImageSizeMatrix, kSizeModes) == SizeMode::Panorama;
}

- (void)writeWidth:(int32_t)width height:(int32_t)height {
  [myWidthValueText setStringValue:Decimal(width)];
  [myHeightValueText setStringValue:Decimal(height)];
}

- (void)applyViewportFallback {
  [self writeWidth:myVWidthINTValue height:myVHeightINTValue];
}

- (void)selectSizePreset:(size_t)preset {
  SelectComboIndex(mySizeCombo, (NSInteger)preset);
}

- (void)imageSizeEnableDisable:(BOOL)enabled {
  SetEnabled(mySizeCombo, enabled);
  [self setFieldsEnabled:enabled];
}

- (void)setFieldsEnabled:(BOOL)enabled {
  SetFieldEnabled(myWidthValueText, enabled);
  SetFieldEnabled(myHeightValueText, enabled);
}

- (void)onWidthValue {
  int32_t width = [myWidthValueText intValue];
  if (width < 0 || [[myWidthValueText stringValue] length] == 0)
    return;
  int32_t height = width / 2;
  [myHeightValueText setStringValue:Decimal(height)];
  if (height == 0 && width != 1)
    [self applyViewportFallback];
}

- (void)onHeightValue {
  int32_t height = [myHeightValueText intValue];
  if (height < 0 || [[myHeightValueText stringValue] length] == 0)
    return;
  [myWidthValueText setStringValue:Decimal(Doubled(height))];
  if (height == 0)
    [self applyViewportFallback];
}

- (void)controlTextDidChange:(NSNotification *)notification {
  if (![self panoramaIsOn])
    return;
  id field = [notification object];
  if (field == myWidthValueText)
    [self onWidthValue];
  else if (field == myHeightValueText)
    [self onHeightValue];
}

- (void)onSizeComboBoxSelected {
  NSInteger index = [mySizeCombo indexOfSelectedItem];
  if (index < 0 || (size_t)index >= kSizePresetCount)
    return;
  const SizePreset &preset = kSizePresets[index];
  [myWidthValueText setStringValue:Decimal(preset.width)];
  if ([self panoramaIsOn]) {
    [self onWidthValue];
    return;
  }
  [myHeightValueText setStringValue:Decimal(preset.height)];
  [self setFieldsEnabled:(size_t)index == kCustomSize];
}

- (void)onImageSizeMatrixClicked {
  SizeMode mode = OnChoice(aImageSizeMatrix, kSizeModes);
  if (mode == SizeMode::Fixed) {
    [self imageSizeEnableDisable:YES];
  } else if (mode == SizeMode::Panorama) {
    [self imageSizeEnableDisable:YES];
    SetEnabled(mySizeCombo, NO);
    [self selectSizePreset:kCustomSize];
    if ([myHeightValueText intValue] == 0)
      [self applyViewportFallback];
  } else {
    [self imageSizeEnableDisable:NO];
  }
  if ([self panoramaIsOn])
    [self onWidthValue];
}

@end

// The size group as set_output_dimensions leaves it for each mode.
static void ShowOutputDimensions(OptionsPanel *panel, SizeMode mode, int32_t width,
                                 int32_t height) {
  SelectChoice(panel->aImageSizeMatrix, kSizeModes, mode);
  if (mode == SizeMode::Viewport) {
    [panel imageSizeEnableDisable:NO];
    [panel selectSizePreset:kCustomSize];
    [panel writeWidth:0 height:0];
  } else if (mode == SizeMode::Fixed) {
    [panel imageSizeEnableDisable:YES];
    // A size that names no item leaves the user to type it: "Custom".
    [panel selectSizePreset:SizePresetOf(width, height)];
    [panel writeWidth:width height:height];
  } else {
    SetEnabled(panel->mySizeCombo, NO);
    [panel selectSizePreset:kCustomSize];
    if (height != 0)
      [panel writeWidth:width height:height];
    else
      [panel applyViewportFallback];
    [panel setFieldsEnabled:YES];
  }
}

panel::Outcome panel::set_output_dimensions(const OutputDimensions &size) {
  return Perform([=](OptionsPanel *panel) {
    panel->myVWidthINTValue = size.viewport_width;
    if (!size.complete)
      return;
    panel->myVHeightINTValue = size.viewport_height;
    ShowOutputDimensions(panel, size.mode, size.width, size.height);
  });
}
