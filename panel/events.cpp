#include "panel/events.h"

namespace velmar {

static EventSink event_sink = nullptr;

void set_event_sink(EventSink sink) {
  event_sink = sink;
}

void send_event(Event event, const EventValues &values) {
  if (event_sink)
    event_sink(event, values);
}

void stop_events() {
  event_sink = nullptr;
}

} // namespace velmar
