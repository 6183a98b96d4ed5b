#import "panel/OptionsPanel.h"

@implementation OptionsPanel (Environment)

- (void)setOption:(NSButton *)box on:(BOOL)on {
  [box setState:on ? NSControlStateValueOn : NSControlStateValueOff];
}

- (void)setBackground:(NSString *)background {
  NSInteger row = [background isEqualToString:@"default"] ? 0
                  : [background isEqualToString:@"sky"]   ? 1
                                                          : 2;
  [matrix setState:NSControlStateValueOn atRow:row column:0];
}

- (void)setSlider:(NSSlider *)slider value:(int32_t)value {
  // The slider pins the value to its range itself.
  [slider setIntValue:value];
}

- (void)onResetClicked {
  [myIntensitySlider setIntValue:50];
  [myExposureSlider setIntValue:50];
}

@end
