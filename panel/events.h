// Events leave the panel as plain values; the binding turns them into Ruby
// payloads and delivers them to the observers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velmar {

// Every event the panel and the script methods send.
enum class Event {
  PresetChanged,
  OutputChanged,
  EnvironmentChanged,
  OptionsChanged,
  ShowRenderAll,
  Close
};
constexpr size_t kEventCount = 6;
// The observers' method names, in the order of Event.
extern const char *const kEventNames[kEventCount];

// One element of a payload: a text, an integer or a real number.
struct EventValue {
  enum class Kind { Text, Integer, Real };
  EventValue(std::string value) : kind(Kind::Text), text(std::move(value)) {}
  EventValue(int32_t value) : kind(Kind::Integer), integer(value) {}
  EventValue(double value) : kind(Kind::Real), real(value) {}

  Kind kind;
  std::string text;
  int32_t integer = 0;
  double real = 0;
};
using EventValues = std::vector<EventValue>;
using EventSink = void (*)(Event event, const EventValues &values);

void set_event_sink(EventSink sink);
// Delivers synchronously: every observer has seen the event when this returns.
void send_event(Event event, const EventValues &values);
// Drops every later event, for good: the application is terminating.
void stop_events();

} // namespace velmar
