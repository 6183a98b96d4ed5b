#import "panel/OptionsPanel.h"

#import "panel/controls.h"

#include <algorithm>
#include <string>
#include <vector>

// The list's names as UTF-8, in its order: a script selects a preset by name
// in a loop, and comparing bytes spares making a string and searching the
// list's strings with it at each call. The controller is the one instance.
static std::vector<std::string> presetNames;

static std::vector<std::string> SplitNames(const std::string &joined) {
  std::vector<std::string> names;
  size_t start = 0;
  for (size_t bar; (bar = joined.find('|', start)) != std::string::npos; start = bar + 1)
    names.push_back(joined.substr(start, bar - start));
  names.push_back(joined.substr(start));
  return names;
}

@implementation OptionsPanel (Presets)

- (void)populatePresets:(const std::string &)joinedNames {
  presetNames = SplitNames(joinedNames);
  NSArray *names = [NSStringFromUtf8(joinedNames) componentsSeparatedByString:@"|"];
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

- (void)selectPreset:(const std::string &)name {
  auto found = std::find(presetNames.begin(), presetNames.end(), name);
  SelectComboIndex(myPresetCombo,
                   found == presetNames.end() ? NSNotFound : found - presetNames.begin());
}

@end
