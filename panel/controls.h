// The kinds of control the panel is built from, each with its fixed settings.
// Controls come back autoreleased: the view that holds one owns it. Text
// fields and their texts are made in text_fields.mm, radio groups and lists
// in choice_controls.mm, the others in controls.mm.
#pragma once

#import <AppKit/AppKit.h>

#include <string>

NSString *NSStringFromUtf8(const std::string &text);
// Never NULL; the text is cut at an embedded NUL, as the toolkit's C strings are.
std::string Utf8FromNSString(NSString *text);
NSTextField *MakeTextField(NSRect frame);

// A heading when a font is given, a plain label otherwise; fitted to its text.
NSTextField *MakeLabel(NSRect frame, NSString *text, NSFont *font);
NSButton *MakePushButton(NSRect frame, NSString *title, id target, SEL action, BOOL fitted);
NSButton *MakeCheckBox(NSRect frame, NSString *title);
NSComboBox *MakeComboBox(NSRect frame);
NSBox *MakeSeparator(NSRect frame);
// Where a slider starts, and where Reset puts it back.
constexpr int kSliderStart = 50;
NSSlider *MakeSlider(NSRect frame);
// A slider that answers presses on its drawn track only, not on the empty rest of its frame.
@interface VOPTrackSlider : NSSlider
- (NSRect)trackFrame;
@end

NSView *MakeContainer(NSRect frame, NSArray *subviews);

struct RadioGeometry {
  NSSize spacing;
  NSSize cellSize;
};
// Cells take the titles in row order, or column order for a single row.
// A null geometry keeps the toolkit's default spacing, and makes every cell as
// large as the largest title and a gap wider, so that a cell's button keeps
// clear of the title before it (the default cell size can be wider than a tab).
NSMatrix *MakeRadioGroup(NSRect frame, int rows, int columns, NSArray *titles,
                         const RadioGeometry *geometry, id target, SEL action);

// The toolkit redraws a control whenever it is told its enabled state, the
// same or not; scripts repeat their settings, so an unchanged state is skipped.
void SetEnabled(NSControl *control, BOOL enabled);

// Disabling a field aborts an edit in progress, which would drop what the user
// typed last: the edit is taken into the field first. (Only an enabled field
// is ever edited, so enabling one finds no edit.)
void SetFieldEnabled(NSTextField *field, BOOL enabled);

// The width and height the widest and the tallest of the group's cells need.
NSSize WidestCellSize(NSMatrix *group);

// The index of the cell that is on, counted in the order of the group's cells;
// -1 when none is.
long OnCellIndex(NSMatrix *group);
// Turns the cell at that index on, and so the group's other cells off.
void SelectCell(NSMatrix *group, long index);

// A non-editable combo box must be told to show the item it has selected.
void ShowComboSelection(NSComboBox *combo);
// Selects the item at the index and shows it; NSNotFound keeps the selection.
void SelectComboIndex(NSComboBox *combo, NSInteger index);
