// The test driver's reset, so that one test of a plugin cannot leak into the next.
#include "binding/exports.h"
#include "binding/observers.h"
#include "binding/script_call.h"

void OptionsPanel_reset() {
  velmar::forget_observers();
  if (velmar::panel::is_built())
    velmar::raise_or_true(velmar::attempt([] { return velmar::panel::reset_to_start(); }));
}
