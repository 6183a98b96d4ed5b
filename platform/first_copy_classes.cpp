// GNUstep's runtime registers each library's Objective-C classes and
// categories while the library loads, through __objc_exec_class, which the
// compiler calls from the library's constructors. A later copy of an
// extension brings classes of the same names: the runtime keeps the first
// copy's classes, but puts the later copy's category methods onto them, so
// the later copy's code would run on the first copy's objects, with its own
// static state. Defined here and hidden, this is the function this library's
// constructors call: it registers nothing while another loaded file owns the
// class that marks the extension. Apple's runtime keeps each copy's classes
// and categories apart (docs/MACOS.md), so macOS builds leave this file out.
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
