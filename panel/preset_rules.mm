#import "panel/OptionsPanel.h"

#import "panel/controls.h"

@implementation OptionsPanel (Presets)

- (void)populatePresets:(NSString *)joinedNames {
  NSArray *names = [joinedNames componentsSeparatedByString:@"|"];
  [myPresets release];
  myPresets = [names retain];
  // GNUstep keeps the selected index through removeAllItems, so it would
  // point into the new items.
  NSInteger selected = [myPresetCombo indexOfSelectedItem];
  if (selected >= 0)
    [myPresetCombo deselectItemAtIndex:selected];
  [myPresetCombo removeAllItems];
  [myPresetCombo addItemsWithObjectValues:names];
  // The old selection went with the old items.
  ShowComboSelection(myPresetCombo);
}

- (void)selectPreset:(NSString *)name {
  SelectComboItem(myPresetCombo, name);
}

@end
