#include "panel/events.h"

namespace velmar {

const char *const kEventNames[kEventCount] = {"preset_changed",
                                              "output_changed",
                                              "environment_changed",
                                              "options_changed",
                                              "options_changed_show_render_all",
                                              "close"};

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
