#import "panel/OptionsPanel.h"

#import "panel/radio_groups.h"

using namespace velmar;

static NSArray *SizeItems() {
  NSMutableArray *items = [NSMutableArray arrayWithCapacity:kSizePresetCount];
  for (const SizePreset &preset : kSizePresets)
    [items addObject:@(preset.item)];
  return items;
}

@interface OptionsPanel (ImageTabParts)
- (NSTextField *)makeSizeField:(NSRect)frame action:(SEL)action;
@end

@implementation OptionsPanel (ImageTab)

- (NSView *)buildImageTabWithTexts:(NSArray *)texts font:(NSFont *)headingFont {
  NSMutableArray *controls = [NSMutableArray array];
  [controls addObject:MakeSeparator(NSMakeRect(190, 10, 10, 180))];
  [controls addObject:MakeLabel(NSMakeRect(10, 180, 100, 50),
                                [texts objectAtIndex:kImageSizeHeading], headingFont)];

  RadioGeometry sizeGeometry = {NSMakeSize(7, 7), NSMakeSize(180, 18)};
  aImageSizeMatrix =
      MakeRadioGroup(NSMakeRect(10, 130, 300, 75), 3, 1, ChoiceTitles(kSizeModes, texts),
                     &sizeGeometry, self, @selector(onImageSizeMatrixClicked));
  [controls addObject:aImageSizeMatrix];
  [controls
      addObject:MakeLabel(NSMakeRect(10, 80, 100, 50), [texts objectAtIndex:kSizeLabel], nil)];

  mySizeCombo = MakeComboBox(NSMakeRect(65, 75, 115, 26));
  [mySizeCombo setTarget:self];
  [mySizeCombo addItemsWithObjectValues:SizeItems()];
  [self selectSizePreset:kCustomSize];
  [mySizeCombo setAction:@selector(onSizeComboBoxSelected)];
  [controls addObject:mySizeCombo];

  [controls
      addObject:MakeLabel(NSMakeRect(10, 50, 100, 50), [texts objectAtIndex:kWidthLabel], nil)];
  myWidthValueText = [self makeSizeField:NSMakeRect(105, 47, 70, 22)
                                  action:@selector(onWidthValue)];
  [controls addObject:myWidthValueText];
  [controls
      addObject:MakeLabel(NSMakeRect(10, 20, 100, 50), [texts objectAtIndex:kHeightLabel], nil)];
  myHeightValueText = [self makeSizeField:NSMakeRect(105, 17, 70, 22)
                                   action:@selector(onHeightValue)];
  [controls addObject:myHeightValueText];

  [controls addObject:MakeLabel(NSMakeRect(205, 180, 100, 50),
                                [texts objectAtIndex:kImageFormatHeading], headingFont)];
  aImageTypeLMatrix =
      MakeRadioGroup(NSMakeRect(210, 175, 300, 50), 1, 3, ChoiceTitles(kImageFormats, texts),
                     nullptr, self, @selector(onImageTypeMatrixClicked));
  [controls addObject:aImageTypeLMatrix];
  myTransCButton =
      MakeCheckBox(NSMakeRect(210, 120, 100, 50), [texts objectAtIndex:kTransparencyBox]);
  [controls addObject:myTransCButton];

  [controls addObject:MakeLabel(NSMakeRect(205, 90, 100, 50),
                                [texts objectAtIndex:kSaveLocationHeading], headingFont)];
  RadioGeometry saveGeometry = {NSMakeSize(20, 25), NSMakeSize(68, 18)};
  aISLMatrix =
      MakeRadioGroup(NSMakeRect(210, 80, 300, 50), 1, 2, ChoiceTitles(kSaveLocations, texts),
                     &saveGeometry, self, @selector(onISLMatrixClicked));
  [controls addObject:aISLMatrix];
  mySaveLocText = MakeTextField(NSMakeRect(210, 20, 130, 22));
  [mySaveLocText setTarget:self];
  // Escape while the field is edited (panel/keyboard.mm).
  [mySaveLocText setDelegate:self];
  [controls addObject:mySaveLocText];
  myDirButton =
      MakePushButton(NSMakeRect(340, 10, 40, 40), @"...", self, @selector(onDirClicked), NO);
  [controls addObject:myDirButton];
  // The left column top to bottom, then the right one.
  imageKeyOrder = [@[
    aImageSizeMatrix, mySizeCombo, myWidthValueText, myHeightValueText, aImageTypeLMatrix,
    myTransCButton, aISLMatrix, mySaveLocText, myDirButton
  ] retain];

  return MakeContainer(NSMakeRect(10, 10, 400, 218), controls);
}

- (NSTextField *)makeSizeField:(NSRect)frame action:(SEL)action {
  NSTextField *field = MakeTextField(frame);
  [field setAlignment:NSTextAlignmentCenter];
  [field setDelegate:self];
  [field setTarget:self];
  [field setAction:action];
  return field;
}

@end
