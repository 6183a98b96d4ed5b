// Events leave the panel as plain values; the binding turns them into Ruby
// payloads and delivers them to the observers.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace velmar {

using EventValue = std::variant<std::string, int32_t, double>;
using EventValues = std::vector<EventValue>;
using EventSink = void (*)(const char *name, const EventValues &values);

void set_event_sink(EventSink sink);
// Delivers synchronously: every observer has seen the event when this returns.
void send_event(const char *name, const EventValues &values);

} // namespace velmar
