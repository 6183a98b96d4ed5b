// The observer list and the delivery of events to it.
#pragma once

#include "panel/events.h"

#include <ruby.h>

namespace velmar {

// Empties the observer list.
void forget_observers();

// Calls the public method named after the event on every observer that has
// one, in the order of registration, with the one payload Array. An observer
// that raises does not stop the others.
void notify_options_window_observer(Event event, VALUE payload);

} // namespace velmar
