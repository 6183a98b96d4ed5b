#import "panel/OptionsPanel.h"

#import "panel/controls.h"

#include <climits>

// Width and height that each item of mySizeCombo writes into the fields.
static const char *const kPresetWidths[] = {"0",    "230",  "640", "1024", "2048",
                                            "3076", "4076", "852", "1600", "1920"};
static const char *const kPresetHeights[] = {"0",    "150",  "480", "768", "1536",
                                             "2034", "3304", "480", "900", "1080"};
static const NSInteger kPresetCount = sizeof(kPresetWidths) / sizeof(kPresetWidths[0]);

enum { kViewportRow = 0, kFixedRow = 1, kPanoramaRow = 2 };

static NSString *Decimal(int32_t value) {
  return [NSString stringWithFormat:@"%d", value];
}

// Doubling a height must not overflow: the width saturates at the largest value.
static int32_t Doubled(int32_t height) {
  return height > INT32_MAX / 2 ? INT32_MAX : height * 2;
}

@implementation OptionsPanel (ImageSize)

- (BOOL)panoramaIsOn {
  return [[[aImageSizeMatrix cells] objectAtIndex:kPanoramaRow] state] == NSControlStateValueOn;
}

- (void)applyViewportFallback {
  [myWidthValueText setStringValue:Decimal(myVWidthINTValue)];
  [myHeightValueText setStringValue:Decimal(myVHeightINTValue)];
}

- (void)selectSizeItem:(NSString *)item {
  selectingSizeItem = YES;
  SelectComboItem(mySizeCombo, item);
  selectingSizeItem = NO;
}

- (void)imageSizeEnableDisable:(BOOL)enabled {
  [mySizeCombo setEnabled:enabled];
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

- (void)comboBoxSelectionDidChange:(NSNotification *)notification {
  if ([notification object] == mySizeCombo && !selectingSizeItem)
    [self onSizeComboBoxSelected];
}

- (void)onSizeComboBoxSelected {
  NSInteger index = [mySizeCombo indexOfSelectedItem];
  if (index < 0 || index >= kPresetCount)
    return;
  ShowComboSelection(mySizeCombo);
  NSString *widthText = [NSString stringWithUTF8String:kPresetWidths[index]];
  [myWidthValueText setStringValue:widthText];
  if ([self panoramaIsOn]) {
    int32_t height = [widthText intValue] / 2;
    [myHeightValueText setStringValue:Decimal(height)];
    if (height == 0)
      [self applyViewportFallback];
    return;
  }
  [myHeightValueText setStringValue:[NSString stringWithUTF8String:kPresetHeights[index]]];
  [self setFieldsEnabled:index == 0];
}

- (void)onImageSizeMatrixClicked {
  NSInteger row = [aImageSizeMatrix selectedRow];
  if (row == kFixedRow) {
    [self imageSizeEnableDisable:YES];
  } else if (row == kPanoramaRow) {
    [self imageSizeEnableDisable:YES];
    [mySizeCombo setEnabled:NO];
    [self selectSizeItem:@"Custom"];
    if ([myHeightValueText intValue] == 0)
      [self applyViewportFallback];
  } else {
    [self imageSizeEnableDisable:NO];
  }
  if ([self panoramaIsOn])
    [self onWidthValue];
}

- (void)rememberViewportWidth:(int32_t)width {
  myVWidthINTValue = width;
}

- (void)rememberViewportHeight:(int32_t)height {
  myVHeightINTValue = height;
}

- (void)setSizeMode:(NSString *)mode width:(int32_t)width height:(int32_t)height {
  if ([mode isEqualToString:@"viewport"]) {
    [aImageSizeMatrix setState:NSControlStateValueOn atRow:kViewportRow column:0];
    [self imageSizeEnableDisable:NO];
    [self selectSizeItem:@"Custom"];
    [myWidthValueText setStringValue:Decimal(0)];
    [myHeightValueText setStringValue:Decimal(0)];
  } else if ([mode isEqualToString:@"fixed"]) {
    [aImageSizeMatrix setState:NSControlStateValueOn atRow:kFixedRow column:0];
    [self imageSizeEnableDisable:YES];
    // A size that names no item leaves the user to type it: "Custom".
    NSString *item = [NSString stringWithFormat:@"%d x %d", width, height];
    BOOL named = [mySizeCombo indexOfItemWithObjectValue:item] != NSNotFound;
    [self selectSizeItem:named ? item : @"Custom"];
    [myWidthValueText setStringValue:Decimal(width)];
    [myHeightValueText setStringValue:Decimal(height)];
  } else {
    [aImageSizeMatrix setState:NSControlStateValueOn atRow:kPanoramaRow column:0];
    [mySizeCombo setEnabled:NO];
    [self selectSizeItem:@"Custom"];
    if (height != 0) {
      [myWidthValueText setStringValue:Decimal(width)];
      [myHeightValueText setStringValue:Decimal(height)];
    } else {
      [self applyViewportFallback];
    }
    [self setFieldsEnabled:YES];
  }
}

@end
