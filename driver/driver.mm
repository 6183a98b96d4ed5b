// Acts as the user on the options panel through the toolkit's own paths, and
// reads back what the user sees. Controls are reached by their names in the
// controller (or the readable names of control_names.h), so the panel itself
// carries no test hooks.
#import "driver/functions.h"

#include "binding/first_copy.h"

// Every function, by the room it lives in.
static const driver::FunctionGroup *const kRooms[] = {
    &driver::kActing, &driver::kReading,     &driver::kFolderChooser,
    &driver::kHost,   &driver::kDiagnostics, &driver::kStep,
};

extern "C" __attribute__((visibility("default"))) void Init_OptionsPanelDriver() {
  VALUE module = rb_define_module("OptionsPanelDriver");
  if (!velmar::claim_first_copy(module, reinterpret_cast<const void *>(&Init_OptionsPanelDriver)))
    return;
  // The function itself, not the macro that newer Rubies put in its place for C++.
  for (const driver::FunctionGroup *room : kRooms)
    for (size_t i = 0; i < room->count; ++i)
      (rb_define_module_function)(module, room->functions[i].name, room->functions[i].handler,
                                  room->functions[i].arity);
}
