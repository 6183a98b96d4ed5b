// A jump is Ruby leaving code early by longjmp: a raise, a throw, a break,
// exit or a signal. rb_protect stops it where observer code is called. A jump
// that must reach a caller outside the panel (exit, a signal, a throw or break
// past the observer) is then held: kept here, running no Ruby code, until the
// script call or the event loop lets it go on, with no toolkit frame below,
// to where it was headed.
#pragma once

#include "binding/exports.h"

#include <ruby.h>

namespace velmar {

// A raise (exit and signals included) leaves its exception in rb_errinfo(); a
// throw or a break leaves an internal record there instead, which must never
// reach an ordinary method: Ruby 3.3 crashes on rb_obj_is_kind_of of one.
// Returns the exception, or Qnil for any other jump.
inline VALUE exception_of(VALUE info) {
  if (SPECIAL_CONST_P(info) || BUILTIN_TYPE(info) != T_OBJECT)
    return Qnil;
  return RTEST(rb_obj_is_kind_of(info, rb_eException)) ? info : Qnil;
}
inline VALUE exception_of_jump() {
  return exception_of(rb_errinfo());
}

// Holds the jump that rb_protect just stopped with `state`, unless it is a
// plain exception: then false, the exception left in rb_errinfo(). A held
// throw or break keeps its record in rb_errinfo(), so no Ruby code may run
// until it goes on, from the innermost script call in progress now.
bool hold_jump(int state);
bool jump_held();
// Lets the held jump go on from here, where no toolkit frame is below: an exit
// or signal is raised again, a throw or break resumes as the original one. A
// record that Ruby code overwrote meanwhile can't go on and is reported once.
// Returns when nothing is held.
void resume_held_jump();
// The same at the end of a script call at `depth` (1 for the outermost), for a
// jump held during that call.
void resume_jump_held_within(long depth);
// A jump still held when Ruby code runs again was left by a user's action that
// nobody resumed: an exit or signal is raised here, the first place without a
// toolkit frame; a throw or break, whose target may be gone, is reported once.
void settle_stale_jump();

} // namespace velmar

namespace velmar {

// resume_held_jump from the driver or a host's event loop, which don't link
// the extension: the extension, if loaded, lets its held jump go on.
inline void resume_options_panel_jump() {
  static decltype(&OptionsPanel_resume_held_jump) resume = nullptr;
  if (!resume)
    resume = OPTIONS_PANEL_FIND(OptionsPanel_resume_held_jump);
  if (resume)
    resume();
}

} // namespace velmar
