// A radio group on the panel and its table of choices: the group shows the
// titles, takes the choice and reports it, all by the table.
#pragma once

#import "panel/controls.h"

#include "panel/choices.h"

// The choice whose cell is on.
template <typename Value, size_t Count>
Value OnChoice(NSMatrix *group, const velmar::RadioGroup<Value, Count> &choices) {
  return choices.at_cell(OnCellIndex(group));
}

template <typename Value, size_t Count>
const char *OnWord(NSMatrix *group, const velmar::RadioGroup<Value, Count> &choices) {
  return choices[OnChoice(group, choices)].word;
}

template <typename Value, size_t Count>
void SelectChoice(NSMatrix *group, const velmar::RadioGroup<Value, Count> &choices, Value value) {
  SelectCell(group, choices[value].cell);
}

// The titles in the order of the group's cells, from the texts indexed by TextKey.
template <typename Value, size_t Count>
NSArray *ChoiceTitles(const velmar::RadioGroup<Value, Count> &choices, NSArray *texts) {
  NSMutableArray *titles = [NSMutableArray arrayWithCapacity:Count];
  for (size_t cell = 0; cell < Count; ++cell)
    [titles addObject:[texts objectAtIndex:choices[choices.at_cell(cell)].title]];
  return titles;
}
