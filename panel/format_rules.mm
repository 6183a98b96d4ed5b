#import "panel/perform.h"

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
    ShowChooserOver(chooser, [self window]);
  }
  if ([chooser runModal] == NSModalResponseOK)
    [mySaveLocText setStringValue:[[chooser URL] path]];
  TakeKeysBackAfterChooser([self window]);
}

@end

// A tick stays until the user clears it: without `tick` the box keeps its own.
panel::Outcome panel::set_output_format(ImageFormat format, bool tick) {
  return Perform([=](OptionsPanel *panel) {
    SelectChoice(panel->aImageTypeLMatrix, kImageFormats, format);
    SetEnabled(panel->myTransCButton, TakesTransparency(format));
    if (tick)
      [panel->myTransCButton setState:NSControlStateValueOn];
  });
}

panel::Outcome panel::set_output_directory(SaveLocation location, const std::string &folder) {
  return Perform([&](OptionsPanel *panel) {
    [panel->mySaveLocText setStringValue:NSStringFromUtf8(folder)];
    [panel imageSaveEnableDisable:location == SaveLocation::Custom];
    SelectChoice(panel->aISLMatrix, kSaveLocations, location);
  });
}
