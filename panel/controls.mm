#import "panel/controls.h"

NSString *NSStringFromUtf8(const std::string &text) {
  // GNUstep drops U+FEFF characters at the start of the text it decodes, as
  // if they were byte order marks; behind a byte of our own they stay part of
  // the text, as the script gave it.
  std::string guarded = "." + text;
  NSString *s = [[NSString alloc] initWithBytes:guarded.data()
                                         length:guarded.size()
                                       encoding:NSUTF8StringEncoding];
  return s ? [[s autorelease] substringFromIndex:1] : @"";
}

std::string Utf8FromNSString(NSString *text) {
  const char *bytes = [text UTF8String];
  return bytes ? std::string(bytes) : std::string();
}

NSTextField *MakeLabel(NSRect frame, NSString *text, NSFont *font) {
  NSTextField *label = [[[NSTextField alloc] initWithFrame:frame] autorelease];
  [label setStringValue:text];
  [label setBezeled:NO];
  [label setDrawsBackground:NO];
  [label setEditable:NO];
  [label setSelectable:NO];
  if (font)
    [label setFont:font];
  [label sizeToFit];
  return label;
}

static void SetButtonLook(NSButton *button, NSString *title) {
  [button setTitle:title];
  [button setBezelStyle:NSRoundedBezelStyle];
  [button setBordered:YES];
  [button setAlignment:NSCenterTextAlignment];
}

NSButton *MakePushButton(NSRect frame, NSString *title, id target, SEL action, BOOL fitted) {
  NSButton *button = [[[NSButton alloc] initWithFrame:frame] autorelease];
  SetButtonLook(button, title);
  [button setTarget:target];
  [button setAction:action];
  if (fitted)
    [button sizeToFit];
  return button;
}

NSButton *MakeCheckBox(NSRect frame, NSString *title, id target) {
  NSButton *box = [[[NSButton alloc] initWithFrame:frame] autorelease];
  SetButtonLook(box, title);
  [box sizeToFit];
  [box setTarget:target];
  [box setButtonType:NSSwitchButton];
  return box;
}

NSTextField *MakeTextField(NSRect frame) {
  return [[[NSTextField alloc] initWithFrame:frame] autorelease];
}

NSComboBox *MakeComboBox(NSRect frame) {
  NSComboBox *combo = [[[NSComboBox alloc] initWithFrame:frame] autorelease];
  [combo setEditable:NO];
  return combo;
}

NSBox *MakeSeparator(NSRect frame) {
  NSBox *box = [[[NSBox alloc] initWithFrame:frame] autorelease];
  [box setBoxType:NSBoxSeparator];
  return box;
}

NSSlider *MakeSlider(NSRect frame, id target) {
  NSSlider *slider = [[[NSSlider alloc] initWithFrame:frame] autorelease];
  [slider setMinValue:0.0];
  [slider setMaxValue:100.0];
  [slider setTarget:target];
  [slider setIntValue:50];
  return slider;
}

NSView *MakeContainer(NSRect frame, NSArray *subviews) {
  NSView *view = [[[NSView alloc] initWithFrame:frame] autorelease];
  for (NSView *subview in subviews)
    [view addSubview:subview];
  return view;
}

NSMatrix *MakeRadioGroup(NSRect frame, int rows, int columns, NSArray *titles,
                         const RadioGeometry *geometry, id target, SEL action) {
  NSButtonCell *prototype = [[[NSButtonCell alloc] init] autorelease];
  [prototype setButtonType:NSRadioButton];
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
  if (target) {
    [group setTarget:target];
    [group setAction:action];
  }
  return group;
}

NSInteger SelectedCellIndex(NSMatrix *group) {
  NSArray *cells = [group cells];
  for (NSUInteger i = 0; i < [cells count]; ++i)
    if ([[cells objectAtIndex:i] state] == NSOnState)
      return (NSInteger)i;
  return -1;
}

void ShowComboSelection(NSComboBox *combo) {
  NSInteger index = [combo indexOfSelectedItem];
  [combo setStringValue:index >= 0 ? [combo itemObjectValueAtIndex:index] : @""];
}

void SelectComboItem(NSComboBox *combo, NSString *text) {
  NSInteger index = [combo indexOfItemWithObjectValue:text];
  if (index != NSNotFound)
    [combo selectItemAtIndex:index];
  ShowComboSelection(combo);
}

void SetFieldEnabled(NSTextField *field, BOOL enabled) {
  if (!enabled && [field currentEditor])
    [field validateEditing];
  [field setEnabled:enabled];
}

void FitCellsToTitles(NSMatrix *group) {
  NSSize size = NSMakeSize(0, [group cellSize].height);
  for (NSCell *cell in [group cells])
    size.width = MAX(size.width, [cell cellSize].width);
  [group setCellSize:size];
  [group sizeToCells];
}
