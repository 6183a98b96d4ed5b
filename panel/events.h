// Events leave the panel as plain values; the binding turns them into Ruby
// payloads and delivers them to the observers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velmar {

// Every event the panel and the script methods send; Close stays last.
enum class Event {
  PresetChanged,
  OutputChanged,
  EnvironmentChanged,
  OptionsChanged,
  ShowRenderAll,
  Close
};
// The observers' method names, in the order of Event; one copy per file that
// uses it, as C++14 has no inline variables.
constexpr const char *kEventNames[] = {"preset_changed",
                                       "output_changed",
                                       "environment_changed",
                                       "options_changed",
                                       "options_changed_show_render_all",
                                       "close"};
constexpr size_t kEventCount = sizeof kEventNames / sizeof *kEventNames;
static_assert(kEventCount == static_cast<size_t>(Event::Close) + 1, "one name for each Event");

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
