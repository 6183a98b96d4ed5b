#import "panel/controls.h"

#import "platform/platform.h"

NSMatrix *MakeRadioGroup(NSRect frame, int rows, int columns, NSArray *titles,
                         const RadioGeometry *geometry, id target, SEL action) {
  NSButtonCell *prototype = [[[VOPRadioButtonCell alloc] init] autorelease];
  [prototype setButtonType:NSButtonTypeRadio];
  NSMatrix *group = [[[NSMatrix alloc] initWithFrame:frame
                                                mode:NSRadioModeMatrix
                                           prototype:prototype
                                        numberOfRows:rows
                                     numberOfColumns:columns] autorelease];
  [group setAllowsEmptySelection:NO];
  if (geometry) {
    [group setIntercellSpacing:geometry->spacing];
    [group setCellSize:geometry->cellSize];
  }
  [group sizeToCells];
  [group setAutoresizingMask:NSViewMaxXMargin | NSViewMinYMargin];
  NSArray *cells = [group cells];
  for (NSUInteger i = 0; i < [titles count]; ++i)
    [[cells objectAtIndex:i] setTitle:[titles objectAtIndex:i]];
  if (!geometry) {
    static const CGFloat kGapBeforeButton = 8;
    NSSize size = WidestCellSize(group);
    [group setCellSize:NSMakeSize(size.width + kGapBeforeButton, size.height)];
    [group sizeToCells];
  }
  if (target) {
    [group setTarget:target];
    [group setAction:action];
  }
  return group;
}

long OnCellIndex(NSMatrix *group) {
  NSArray *cells = [group cells];
  for (NSUInteger i = 0; i < [cells count]; ++i)
    if ([[cells objectAtIndex:i] state] == NSControlStateValueOn)
      return (long)i;
  return -1;
}

void SelectCell(NSMatrix *group, long index) {
  NSInteger columns = [group numberOfColumns];
  [group setState:NSControlStateValueOn atRow:index / columns column:index % columns];
}

NSSize WidestCellSize(NSMatrix *group) {
  NSSize size = NSZeroSize;
  for (NSCell *cell in [group cells]) {
    size.width = MAX(size.width, [cell cellSize].width);
    size.height = MAX(size.height, [cell cellSize].height);
  }
  return size;
}

NSComboBox *MakeComboBox(NSRect frame) {
  NSComboBox *combo = [[[VOPComboBox alloc] initWithFrame:frame] autorelease];
  [combo setEditable:NO];
  return combo;
}

static void ShowComboItem(NSComboBox *combo, NSInteger index) {
  // Our combo boxes cannot be edited, so there is no edit for the control to
  // end first: the cell takes the item itself (a string) and redraws the box once.
  [[combo cell] setObjectValue:index >= 0 ? [combo itemObjectValueAtIndex:index] : @""];
}

void ShowComboSelection(NSComboBox *combo) {
  ShowComboItem(combo, [combo indexOfSelectedItem]);
}

void SelectComboIndex(NSComboBox *combo, NSInteger index) {
  // A text not in the list changes nothing; the selected item is shown already.
  if (index == NSNotFound || index == [combo indexOfSelectedItem])
    return;
  [combo selectItemAtIndex:index];
  ShowComboItem(combo, index);
}
