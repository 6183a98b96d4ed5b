// GNUstep's runtime registers a library's Objective-C classes as it loads,
// through __objc_exec_class. For a later copy of an extension it keeps the
// first copy's classes but adds the later copy's category methods to them, so
// that copy's code would run on the first copy's objects.

// This hidden __objc_exec_class is the one this library's constructors call:
// it registers nothing while another loaded file owns the extension's marker
// class. Apple's runtime keeps copies apart (docs/MACOS.md): macOS builds
// leave this file out.
#include "platform/first_copy_classes.h"

#include <dlfcn.h>
#include <objc/runtime.h>

extern "C" __attribute__((visibility("hidden"))) void __objc_exec_class(void *module) {
  static const auto runtime_exec_class =
      reinterpret_cast<void (*)(void *)>(dlsym(RTLD_NEXT, "__objc_exec_class"));
  Class owner = objc_lookUpClass(velmar::kFirstCopyMarkerClass);
  Dl_info mine, theirs;
  bool elsewhere = owner && dladdr(reinterpret_cast<void *>(&__objc_exec_class), &mine) &&
                   dladdr(reinterpret_cast<void *>(owner), &theirs) &&
                   mine.dli_fbase != theirs.dli_fbase;
  if (!elsewhere)
    runtime_exec_class(module);
}
