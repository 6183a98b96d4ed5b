#import "panel/perform.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace velmar;

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

// GNUstep keeps the selected index through removeAllItems, so it would
// point into new items.
static void EmptyList(NSComboBox *list) {
  NSInteger selected = [list indexOfSelectedItem];
  if (selected >= 0)
    [list deselectItemAtIndex:selected];
  [list removeAllItems];
}

panel::Outcome panel::populate_presets(const std::string &joined_names) {
  return Perform([&](OptionsPanel *panel) {
    presetNames = SplitNames(joined_names);
    NSComboBox *list = panel->myPresetCombo;
    EmptyList(list);
    [list
        addItemsWithObjectValues:[NSStringFromUtf8(joined_names) componentsSeparatedByString:@"|"]];
    // The old selection went with the old items.
    ShowComboSelection(list);
  });
}

panel::Outcome panel::clear_presets() {
  return Perform([](OptionsPanel *panel) {
    presetNames.clear();
    EmptyList(panel->myPresetCombo);
    ShowComboSelection(panel->myPresetCombo);
  });
}

panel::Outcome panel::select_preset(const std::string &name) {
  return Perform([&](OptionsPanel *panel) {
    auto found = std::find(presetNames.begin(), presetNames.end(), name);
    SelectComboIndex(panel->myPresetCombo,
                     found == presetNames.end() ? NSNotFound : found - presetNames.begin());
  });
}
