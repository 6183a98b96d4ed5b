#import "panel/OptionsPanel.h"

#import "panel/controls.h"

enum { kPngColumn = 0, kJpgColumn = 1, kHdrColumn = 2 };
enum { kModelColumn = 0, kCustomColumn = 1 };

@implementation OptionsPanel (FormatAndSaveLocation)

- (void)onImageTypeMatrixClicked {
  // The check mark stays either way: it counts again once PNG is back.
  [myTransCButton setEnabled:[aImageTypeLMatrix selectedColumn] == kPngColumn];
}

- (void)onISLMatrixClicked {
  [self imageSaveEnableDisable:[aISLMatrix selectedColumn] == kCustomColumn];
}

- (void)imageSaveEnableDisable:(BOOL)enabled {
  SetFieldEnabled(mySaveLocText, enabled);
  [myDirButton setEnabled:enabled];
}

- (void)onDirClicked {
  NSOpenPanel *chooser = [NSOpenPanel openPanel];
  [chooser setCanChooseFiles:NO];
  [chooser setCanChooseDirectories:YES];
  if ([chooser runModal] == NSModalResponseOK)
    [mySaveLocText setStringValue:[[chooser URL] path]];
}

- (void)setFormat:(NSString *)format {
  NSInteger column;
  if ([format isEqualToString:@"pnga"]) {
    [myTransCButton setEnabled:YES];
    [myTransCButton setState:NSControlStateValueOn];
    column = kPngColumn;
  } else if ([format isEqualToString:@"png"]) {
    [myTransCButton setEnabled:YES];
    column = kPngColumn;
  } else if ([format isEqualToString:@"jpg"]) {
    [myTransCButton setEnabled:NO];
    column = kJpgColumn;
  } else {
    [myTransCButton setEnabled:NO];
    column = kHdrColumn;
  }
  [aImageTypeLMatrix setState:NSControlStateValueOn atRow:0 column:column];
}

- (void)setSaveLocationMode:(NSString *)mode folder:(NSString *)folder {
  [mySaveLocText setStringValue:folder];
  BOOL model = [mode isEqualToString:@"model"];
  [self imageSaveEnableDisable:!model];
  [aISLMatrix setState:NSControlStateValueOn atRow:0 column:model ? kModelColumn : kCustomColumn];
}

@end
