// OptionsPanel owns the panel's window and every control on it, builds them
// and carries out what scripts and the user change (the rules files, README
// "Layout"). Its instance variables are the controls, under the names the
// rules and the OK step use.
#pragma once

#import "platform/platform.h"

#include "panel/choices.h"
#include "panel/panel_api.h"

@interface OptionsPanel
    : NSWindowController <NSWindowDelegate, NSTextFieldDelegate, NSTabViewDelegate> {
@public
  NSButton *m_pButton;
  NSButton *m_cButton;
  NSButton *mySOLCButton;
  NSButton *myCausticsCButton;
  NSButton *myClayCButton;
  NSButton *myGCCButton;
  NSButton *myIBCButton;
  NSButton *myTCCButton;
  NSButton *myAMCButton;
  NSButton *myTransCButton;
  NSButton *myDirButton;
  NSComboBox *myPresetCombo;
  NSTabView *myTabView;
  NSSlider *myIntensitySlider;
  NSSlider *myExposureSlider;
  NSComboBox *mySizeCombo;
  NSTextField *myWidthValueText;
  NSTextField *myHeightValueText;
  NSTextField *mySaveLocText;
  NSMatrix *aISLMatrix;
  NSMatrix *aImageSizeMatrix;
  NSMatrix *aImageTypeLMatrix;
  NSMatrix *matrix;
  // Each tab's controls in the order Tab visits them.
  NSArray *imageKeyOrder;
  NSArray *environmentKeyOrder;
  int32_t myVWidthINTValue;
  int32_t myVHeightINTValue;
  // On screen from the panel's own point of view: set when it is put there,
  // cleared when it closes. AppKit hides a panel while the application is in
  // the background, which isVisible would take for closed.
  BOOL isOpen;
}

// The one controller, built with the texts on the first call; later calls
// change no text.
+ (instancetype)sharedControllerWithTexts:(const velmar::PanelTexts &)texts;
// The controller once built, else nil.
+ (instancetype)sharedController;
+ (BOOL)isBuilt;

- (instancetype)initWithTexts:(const velmar::PanelTexts &)texts;
- (void)windowWillClose:(NSNotification *)notification;
// AppKit closes every window as the application terminates; the scripts'
// interpreter may be going down by then, so no event is sent from here on.
- (void)applicationWillTerminate:(NSNotification *)notification;
- (void)onCloseClicked;
// Handles the events already queued, without waiting: how a test driver lets the user act.
- (void)processEvents;

// What the script methods show and close the panel with.
- (void)showPanel;
- (void)closePanel;
@end

// Construction of each tab (one file each).
@interface OptionsPanel (ImageTab)
- (NSView *)buildImageTabWithTexts:(NSArray *)texts font:(NSFont *)headingFont;
@end

@interface OptionsPanel (EnvironmentTab)
// Returns the tab's visible controls in stacking order; the caching box is not among them.
- (NSArray *)buildEnvironmentControlsWithTexts:(NSArray *)texts font:(NSFont *)headingFont;
@end

// Where the controls go once their texts are known (layout.mm).
@interface OptionsPanel (Layout)
// Every title shows whole and nothing overlaps or crosses a tab's border, a
// column's separator or the window's edge: controls move right, and columns,
// the tab view and the window grow, only as far as a text needs. Texts that
// fit leave every frame as it was built; the window keeps its origin.
- (void)layOutForTexts;
@end

@interface OptionsPanel (Keyboard)
// The enabled controls on screen that Tab visits, in its order.
- (NSArray *)focusOrder;
// The control that has the keyboard focus (a field being edited included), or nil.
- (NSView *)focusedControl;
// Links the focus order into the window's key-view loop; each change of the
// tab shown or of a control's enabled state calls it.
- (void)linkKeyViewLoop;
- (void)focusFirstControlOfShownTab;
- (void)tabView:(NSTabView *)tabView didSelectTabViewItem:(NSTabViewItem *)item;
- (void)cancelOperation:(id)sender;
- (BOOL)control:(NSControl *)control
               textView:(NSTextView *)textView
    doCommandBySelector:(SEL)command;
@end

@interface OptionsPanel (Apply)
- (void)onApplyClicked;
@end

@interface OptionsPanel (ImageSize)
- (void)controlTextDidChange:(NSNotification *)notification;
- (void)onWidthValue;
- (void)onHeightValue;
- (void)imageSizeEnableDisable:(BOOL)enabled;
- (void)onImageSizeMatrixClicked;
- (void)onSizeComboBoxSelected;
// Selects without running the size-preset rule, and shows the selected item.
- (void)selectSizePreset:(size_t)preset;
@end

@interface OptionsPanel (FormatAndSaveLocation)
- (void)onDirClicked;
- (void)imageSaveEnableDisable:(BOOL)enabled;
- (void)onISLMatrixClicked;
- (void)onImageTypeMatrixClicked;
// The word OK reports for the format and the transparency box.
- (const char *)formatWord;
@end

@interface OptionsPanel (Environment)
- (void)onResetClicked;
@end
