#import "panel/OptionsPanel.h"

#import "panel/radio_groups.h"

using namespace velmar;

@implementation OptionsPanel (FormatAndSaveLocation)

// The box is enabled only for a format that takes it; its tick stays either
// way and counts again once such a format is back.
- (void)onImageTypeMatrixClicked {
  SetEnabled(myTransCButton, TakesTransparency(OnChoice(aImageTypeLMatrix, kImageFormats)));
}

- (const char *)formatWord {
  ImageFormat format = OnChoice(aImageTypeLMatrix, kImageFormats);
  if (TakesTransparency(format) && [myTransCButton state] == NSControlStateValueOn)
    return kTransparentPngWord;
  return kImageFormats[format].word;
}

- (void)onISLMatrixClicked {
  [self imageSaveEnableDisable:OnChoice(aISLMatrix, kSaveLocations) == SaveLocation::Custom];
}

- (void)imageSaveEnableDisable:(BOOL)enabled {
  SetFieldEnabled(mySaveLocText, enabled);
  SetEnabled(myDirButton, enabled);
}

- (void)onDirClicked {
  NSOpenPanel *chooser = nil;
  {
    // The chooser is made and first drawn with the short image search: its
    // images and icons cost hundreds of milliseconds the first time otherwise.
    ShortImageSearch imageSearch;
    chooser = [NSOpenPanel openPanel];
    [chooser setCanChooseFiles:NO];
    [chooser setCanChooseDirectories:YES];
    NSString *folder = [[mySaveLocText stringValue] stringByExpandingTildeInPath];
    BOOL isFolder = NO;
    if ([[NSFileManager defaultManager] fileExistsAtPath:folder isDirectory:&isFolder] && isFolder)
      [chooser setDirectoryURL:[NSURL fileURLWithPath:folder isDirectory:YES]];
    // The button's action comes while it is still pressed; it must not look
    // so through the whole time the chooser is open.
    [myDirButton highlight:NO];
    ShowChooserOver(chooser, window);
  }
  if ([chooser runModal] == NSModalResponseOK)
    [mySaveLocText setStringValue:[[chooser URL] path]];
  TakeKeysBackAfterChooser(window);
}

- (void)setFormat:(ImageFormat)format tickingTransparency:(BOOL)tick {
  SelectChoice(aImageTypeLMatrix, kImageFormats, format);
  SetEnabled(myTransCButton, TakesTransparency(format));
  if (tick)
    [myTransCButton setState:NSControlStateValueOn];
}

- (void)setSaveLocation:(SaveLocation)location folder:(NSString *)folder {
  [mySaveLocText setStringValue:folder];
  [self imageSaveEnableDisable:location == SaveLocation::Custom];
  SelectChoice(aISLMatrix, kSaveLocations, location);
}

@end
