#import "panel/OptionsPanel.h"

#import "panel/controls.h"

// The panel is built at frames that suit the English texts. This pass
// measures what each translated title needs and moves or grows only what must
// make room: in each tab a control for its title, a button for the row below,
// controls past their label, the right column past the left; then the tab
// view, the header's list, the window (up to the screen's edge) and its buttons.

// Between the end of a label's text and the control beside it.
static const CGFloat kLabelGap = 8;
// Between OK and Close when their titles make them meet.
static const CGFloat kButtonGap = 8;
// Between a widened radio cell's title and the next cell or the tab's edge.
static const CGFloat kCellGap = 8;
// Between the rightmost control and the tab's right edge.
static const CGFloat kTabMargin = 2;
// A tab's sloped ends beside its label, and the strip's before the first tab.
static const CGFloat kTabEnds = 14;
// Between the window's edges and the tab view, and the buttons.
static const CGFloat kWindowMargin = 10;
// Between the header's list and the tab view's right edge.
static const CGFloat kListMargin = 10;
// The narrowest the header's list gets beside a long heading.
static const CGFloat kMinListWidth = 115;

// What a person sees of the view: a slider only draws its track.
static NSRect VisibleFrame(NSView *view) {
  if ([view respondsToSelector:@selector(trackFrame)])
    return [(VOPTrackSlider *)view trackFrame];
  return [view frame];
}

static void MoveBy(NSView *view, CGFloat dx) {
  [view setFrameOrigin:NSMakePoint(NSMinX([view frame]) + dx, NSMinY([view frame]))];
}

static BOOL IsLabel(NSView *view) {
  return [view isKindOfClass:[NSTextField class]] && ![(NSTextField *)view isEditable] &&
         ![(NSTextField *)view isBezeled];
}

static BOOL IsVerticalSeparator(NSView *view) {
  return [view isKindOfClass:[NSBox class]] && [(NSBox *)view boxType] == NSBoxSeparator &&
         NSHeight([view frame]) > NSWidth([view frame]);
}

// Labels and check boxes are fitted as they are made; a radio group's cells
// and a push button that keeps its frame may still be too narrow. Such a
// button grows to the left: it stands at the right end of its row.
static void FitToTitle(NSView *view) {
  if ([view isKindOfClass:[NSMatrix class]]) {
    NSMatrix *group = (NSMatrix *)view;
    CGFloat widest = WidestCellSize(group).width;
    if (widest > [group cellSize].width) {
      [group setCellSize:NSMakeSize(widest + kCellGap, [group cellSize].height)];
      [group sizeToCells];
    }
  } else if ([view isKindOfClass:[NSButton class]]) {
    NSRect frame = [view frame];
    CGFloat width = [[(NSButton *)view cell] cellSize].width;
    if (width > NSWidth(frame))
      [view setFrame:NSMakeRect(NSMaxX(frame) - width, NSMinY(frame), width, NSHeight(frame))];
  }
}

// 0 for the left column, 1 for the right one (the separator's own).
static int ColumnOf(NSView *view, NSView *separator) {
  return separator && NSMinX([view frame]) >= NSMinX([separator frame]) ? 1 : 0;
}

static BOOL InSameRow(NSView *a, NSView *b) {
  NSRect ra = VisibleFrame(a), rb = VisibleFrame(b);
  return NSMinY(ra) < NSMaxY(rb) && NSMinY(rb) < NSMaxY(ra);
}

// Moves what a label names, in its row and column, past the label's text.
// Controls that started at one x in a column move together, so fields that
// were aligned stay aligned.
static void PushPastLabels(NSArray *views, NSView *separator) {
  NSMutableDictionary *shifts = [NSMutableDictionary dictionary];
  for (NSView *label in views) {
    if (!IsLabel(label))
      continue;
    for (NSView *view in views) {
      if (IsLabel(view) || NSMinX([view frame]) <= NSMinX([label frame]) ||
          ColumnOf(view, separator) != ColumnOf(label, separator) || !InSameRow(label, view))
        continue;
      CGFloat shift = ceil(NSMaxX([label frame]) + kLabelGap - NSMinX([view frame]));
      NSString *key =
          [NSString stringWithFormat:@"%d %g", ColumnOf(view, separator), NSMinX([view frame])];
      if (shift > [[shifts objectForKey:key] doubleValue])
        [shifts setObject:@(shift) forKey:key];
    }
  }
  NSMutableArray *moves = [NSMutableArray array];
  for (NSView *view in views) {
    NSString *key =
        [NSString stringWithFormat:@"%d %g", ColumnOf(view, separator), NSMinX([view frame])];
    if (NSNumber *shift = [shifts objectForKey:key])
      [moves addObject:@[ view, shift ]];
  }
  for (NSArray *move in moves)
    MoveBy([move objectAtIndex:0], [[move objectAtIndex:1] doubleValue]);
}

static CGFloat RightmostEdge(NSArray *views, NSView *separator, int column) {
  CGFloat edge = 0;
  for (NSView *view in views)
    if (view != separator && ColumnOf(view, separator) == column)
      edge = MAX(edge, NSMaxX(VisibleFrame(view)));
  return edge;
}

// The separator's line and the right column move right of the left column.
static void KeepColumnsApart(NSArray *views, NSView *separator) {
  if (!separator)
    return;
  CGFloat overlap = ceil(RightmostEdge(views, separator, 0) - floor(NSMidX([separator frame])));
  if (overlap <= 0)
    return;
  // Which column a view is in is read from the separator's place before it moves.
  NSMutableArray *right = [NSMutableArray array];
  for (NSView *view in views)
    if (ColumnOf(view, separator) == 1)
      [right addObject:view];
  for (NSView *view in right)
    MoveBy(view, overlap);
}

// A font with tall lines (Chinese, for one) makes fitted check boxes taller
// than the rows they are stacked in; the upper of two buttons that would meet
// gives up the bottom of its frame, which holds no drawing.
static void KeepRowsApart(NSArray *views) {
  for (NSView *upper in views)
    for (NSView *lower in views) {
      NSRect top = [upper frame], bottom = [lower frame];
      if (upper == lower || NSMinY(bottom) >= NSMinY(top) || !NSIntersectsRect(top, bottom) ||
          ![upper isKindOfClass:[NSButton class]])
        continue;
      CGFloat overlap = NSMaxY(bottom) - NSMinY(top);
      [upper
          setFrame:NSMakeRect(NSMinX(top), NSMaxY(bottom), NSWidth(top), NSHeight(top) - overlap)];
    }
}

// Lays out one tab's view and returns the width its controls need.
static CGFloat LayOutTab(NSView *tab) {
  NSArray *views = [tab subviews];
  NSView *separator = nil;
  for (NSView *view in views) {
    FitToTitle(view);
    if (IsVerticalSeparator(view))
      separator = view;
  }
  KeepRowsApart(views);
  PushPastLabels(views, separator);
  KeepColumnsApart(views, separator);
  return RightmostEdge(views, nil, 0) + kTabMargin;
}

// OK and Close move with the window's right edge; a long pair moves left to
// stay inside it, and OK moves left again where it would cover Close.
static void PlaceButtons(NSButton *ok, NSButton *close, CGFloat width, CGFloat growth) {
  CGFloat overflow = NSMaxX([close frame]) + growth - (width - kWindowMargin);
  for (NSButton *button in @[ ok, close ])
    MoveBy(button, growth - MAX(0, overflow));
  if (NSMaxX([ok frame]) > NSMinX([close frame]))
    MoveBy(ok, NSMinX([close frame]) - kButtonGap - NSMaxX([ok frame]));
}

@interface OptionsPanel (LayoutParts)
- (CGFloat)tabViewGrowth;
- (CGFloat)tabLabelsWidth;
- (CGFloat)widestOnScreen;
@end

@implementation OptionsPanel (Layout)

// The tabs' labels stand side by side along the tab view's top, each tab
// drawn with sloped ends beside its label.
- (CGFloat)tabLabelsWidth {
  CGFloat width = kTabEnds;
  for (NSTabViewItem *item in [myTabView tabViewItems])
    width += [item sizeOfLabel:NO].width + kTabEnds;
  return width;
}

// The window grows no further than the screen's right edge from where it
// stands; a text that needs more is cut there.
- (CGFloat)widestOnScreen {
  NSScreen *screen = [[self window] screen] ? [[self window] screen] : [NSScreen mainScreen];
  CGFloat border = NSWidth([[self window] frame]) - NSWidth([[[self window] contentView] frame]);
  return NSMaxX([screen visibleFrame]) - NSMinX([[self window] frame]) - border;
}

// Lays out both tabs and returns how much wider the tab view must be.
- (CGFloat)tabViewGrowth {
  CGFloat tabsNeed = 0;
  for (NSTabViewItem *item in [myTabView tabViewItems]) {
    // As the tab view will show it: the radio groups keep to the top edge.
    [[item view] setFrame:[myTabView contentRect]];
    tabsNeed = MAX(tabsNeed, LayOutTab([item view]));
  }
  return MAX(0, ceil(MAX(tabsNeed - NSWidth([myTabView contentRect]),
                         [self tabLabelsWidth] - NSWidth([myTabView frame]))));
}

- (void)layOutForTexts {
  NSView *content = [[self window] contentView];
  CGFloat contentWidth = NSWidth([content frame]);
  CGFloat tabGrowth = [self tabViewGrowth];
  PushPastLabels([content subviews], nil);
  CGFloat headerNeed = NSMinX([myPresetCombo frame]) + kMinListWidth + kListMargin + kWindowMargin;
  CGFloat buttonsNeed =
      NSWidth([m_pButton frame]) + kButtonGap + NSWidth([m_cButton frame]) + 2 * kWindowMargin;
  CGFloat width = MAX(MAX(contentWidth, NSMaxX([myTabView frame]) + tabGrowth + kWindowMargin),
                      MAX(headerNeed, buttonsNeed));
  width = MIN(width, MAX(contentWidth, [self widestOnScreen]));

  NSRect tabFrame = [myTabView frame];
  tabFrame.size.width = width - NSMinX(tabFrame) - kWindowMargin;
  [myTabView setFrame:tabFrame];
  NSRect list = [myPresetCombo frame];
  // Set only when it changes: the toolkit may give the list its own height.
  if (NSMaxX(list) != NSMaxX(tabFrame) - kListMargin)
    [myPresetCombo
        setFrameSize:NSMakeSize(NSMaxX(tabFrame) - kListMargin - NSMinX(list), NSHeight(list))];
  PlaceButtons(m_pButton, m_cButton, width, width - contentWidth);

  if (width > contentWidth) {
    [[self window] setContentSize:NSMakeSize(width, NSHeight([content frame]))];
    for (NSTabViewItem *item in [myTabView tabViewItems])
      [[item view] setFrame:[myTabView contentRect]];
  }
}
@end
