#pragma once

namespace velmar {

// The name of an Objective-C class that the extension defines, which marks
// the extension as loaded (platform/first_copy_classes.cpp).
extern const char kFirstCopyMarkerClass[];

} // namespace velmar
