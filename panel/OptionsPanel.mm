#import "panel/perform.h"

#import "panel/controls.h"
#import "panel/event_pump.h"

#include "panel/events.h"

OptionsPanel *velmar::panel::built_controller = nil;

static NSArray *TextsAsStrings(const velmar::PanelTexts &texts) {
  NSMutableArray *strings = [NSMutableArray arrayWithCapacity:texts.size()];
  for (const std::string &text : texts)
    [strings addObject:NSStringFromUtf8(text)];
  return strings;
}

@implementation OptionsPanel

+ (instancetype)sharedControllerWithTexts:(const velmar::PanelTexts &)texts {
  using velmar::panel::built_controller;
  if (!built_controller) {
    EnsureApplicationObject();
    PrepareRealInput();
    built_controller = [[self alloc] initWithTexts:texts];
    // Building the panel shows it, once the controller is complete.
    [built_controller showBuiltPanel];
  }
  return built_controller;
}

+ (instancetype)sharedController {
  return velmar::panel::built_controller;
}

+ (BOOL)isBuilt {
  return velmar::panel::built_controller != nil;
}

- (instancetype)initWithTexts:(const velmar::PanelTexts &)panelTexts {
  NSArray *texts = TextsAsStrings(panelTexts);
  NSFont *headingFont = [NSFont boldSystemFontOfSize:11];

  NSPanel *panel =
      [[[VOPKeyPanel alloc] initWithContentRect:NSMakeRect(10, 0, 420, 315)
                                      styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                                        backing:NSBackingStoreBuffered
                                          defer:NO] autorelease];
  // The panel is closed and shown again many times; it must outlive each closing.
  [panel setReleasedWhenClosed:NO];
  KeepOnScreenWhenInactive(panel);
  [panel setTitle:[texts objectAtIndex:velmar::kWindowTitle]];
  [panel setFrameOrigin:NSMakePoint(300, 400)];

  self = [super initWithWindow:panel];
  if (!self)
    return nil;
  [panel setDelegate:self];
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(applicationWillTerminate:)
                                               name:NSApplicationWillTerminateNotification
                                             object:nil];

  m_pButton = MakePushButton(NSMakeRect(290, 0, 60, 50), [texts objectAtIndex:velmar::kOkButton],
                             self, @selector(onApplyClicked), YES);
  m_cButton = MakePushButton(NSMakeRect(350, 0, 60, 50), [texts objectAtIndex:velmar::kCloseButton],
                             self, @selector(onCloseClicked), YES);

  NSTextField *presetHeading = MakeLabel(NSMakeRect(15, 287, 100, 50),
                                         [texts objectAtIndex:velmar::kPresetLabel], headingFont);
  myPresetCombo = MakeComboBox(NSMakeRect(110, 280, 290, 26));

  myTabView = [[[VOPPanelTabView alloc] initWithFrame:NSMakeRect(10, 38, 400, 240)] autorelease];
  NSTabViewItem *imageItem = [[[NSTabViewItem alloc] initWithIdentifier:@"tab1"] autorelease];
  [imageItem setLabel:[texts objectAtIndex:velmar::kImageTabLabel]];
  NSTabViewItem *environmentItem = [[[NSTabViewItem alloc] initWithIdentifier:@"tab2"] autorelease];
  [environmentItem setLabel:[texts objectAtIndex:velmar::kEnvironmentTabLabel]];

  NSArray *environmentControls = [self buildEnvironmentControlsWithTexts:texts font:headingFont];
  [imageItem setView:[self buildImageTabWithTexts:texts font:headingFont]];
  [environmentItem setView:MakeContainer(NSMakeRect(10, 10, 400, 218), environmentControls)];
  // Views go in before the items: GNUstep puts the first item's view on screen
  // when the item is added, and not when a view is set later.
  [myTabView addTabViewItem:imageItem];
  [myTabView addTabViewItem:environmentItem];
  [myTabView setDelegate:self];

  NSView *content = [panel contentView];
  for (NSView *view in @[ presetHeading, myTabView, myPresetCombo, m_pButton, m_cButton ])
    [content addSubview:view];
  [self layOutForTexts];

  [self imageSizeEnableDisable:NO];
  [self imageSaveEnableDisable:NO];
  [self focusFirstControlOfShownTab];
  return self;
}

- (void)showBuiltPanel {
  [[self window] makeKeyAndOrderFront:nil];
  isOpen = YES;
}

- (void)showPanel {
  [[self window] setLevel:NSModalPanelWindowLevel];
  [self showWindow:nil];
  SetPanelWindowManagerHints([self window]);
  // A panel that opens with nothing focused would ignore every key until a click.
  if (![self focusedControl])
    [self focusFirstControlOfShownTab];
  isOpen = YES;
}

- (void)closePanel {
  // A closed panel has nothing to close and nothing to tell the scripts,
  // whichever AppKit would report closing a closed window again.
  if (isOpen)
    [self close];
}

- (void)windowWillClose:(NSNotification *)notification {
  isOpen = NO;
  // Each time the panel closes, so that no number of sessions piles them up.
  DropFinishedTimers();
  velmar::send_event(velmar::Event::Close, {1.0});
}

- (void)applicationWillTerminate:(NSNotification *)notification {
  velmar::stop_events();
}

- (void)onCloseClicked {
  [self closePanel];
}

- (void)processEvents {
  HandleQueuedEvents(0, nullptr);
}

@end
