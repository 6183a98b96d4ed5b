// The controller is what the driver finds by name and calls through the
// protocol the extension exports; adopting it here has the compiler check
// that the class answers everything the protocol promises.
#include "binding/exports.h"

#import "panel/OptionsPanel.h"
#include "platform/first_copy_classes.h"

const char velmar::kFirstCopyMarkerClass[] = "OptionsPanel";

@interface OptionsPanel (Exported) <VOPController>
@end

@implementation OptionsPanel (Exported)
@end
