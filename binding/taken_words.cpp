#include "binding/taken_words.h"

#include "binding/convert.h"

namespace velmar {

void warn_if_taken_as(VALUE text, const char *argument, const char *const *known, size_t count,
                      const char *chosen) {
  if (!RTEST(ruby_verbose))
    return;
  Word word = word_text(text);
  if (word == chosen)
    return;
  for (size_t i = 0; i < count; ++i)
    if (word == known[i])
      return;
  VALUE message = rb_sprintf("%" PRIsVALUE ": %s %" PRIsVALUE " is not ",
                             rb_id2str(rb_frame_this_func()), argument, rb_str_inspect(text));
  for (size_t i = 0; i < count; ++i)
    rb_str_catf(message, "%s\"%s\"", i == 0 ? "" : i + 1 == count ? " or " : ", ", known[i]);
  rb_str_catf(message, "; \"%s\" is selected", chosen);
  rb_warning("%" PRIsVALUE, message);
}

} // namespace velmar
