// Words taken as a group's last choice are never refused, but a plugin's
// stored setting then changes without the user doing anything: under
// $VERBOSE (ruby -w), and only then, the setter says so in one warning.
#pragma once

#include "panel/choices.h"

#include <ruby.h>

namespace velmar {

// Warns when the String `text` is none of the `count` words `known` nor
// `chosen`, the word it is taken as; `argument` names it as docs/API.md does.
void warn_if_taken_as(VALUE text, const char *argument, const char *const *known, size_t count,
                      const char *chosen);

// The same for a radio group, whose last choice takes every other word;
// `extra` is a further word the setter knows, or nullptr.
template <typename Value, size_t Count>
void warn_if_taken_as_last(VALUE text, const char *argument, const RadioGroup<Value, Count> &group,
                           const char *extra = nullptr) {
  const char *known[Count];
  size_t count = 0;
  for (size_t i = 0; i + 1 < Count; ++i)
    known[count++] = group.choices[i].word;
  if (extra)
    known[count++] = extra;
  warn_if_taken_as(text, argument, known, count, group.choices[Count - 1].word);
}

} // namespace velmar
