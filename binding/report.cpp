#include "binding/report.h"

namespace velmar {

// Exception#full_message, or on a Ruby without it (before 2.5) the same lines
// made by hand: the first place, the message and class, then each caller.
static VALUE exception_report(VALUE exception) {
  ID full_message = rb_intern("full_message");
  if (rb_respond_to(exception, full_message))
    return rb_funcall(exception, full_message, 0);
  VALUE trace = rb_funcall(exception, rb_intern("backtrace"), 0);
  long lines = RB_TYPE_P(trace, T_ARRAY) ? RARRAY_LEN(trace) : 0;
  VALUE report = rb_str_new_cstr("");
  if (lines > 0) {
    rb_str_append(report, rb_obj_as_string(rb_ary_entry(trace, 0)));
    rb_str_cat_cstr(report, ": ");
  }
  rb_str_append(report, rb_obj_as_string(rb_funcall(exception, rb_intern("message"), 0)));
  rb_str_catf(report, " (%s)\n", rb_obj_classname(exception));
  for (long i = 1; i < lines; ++i) {
    rb_str_cat_cstr(report, "\tfrom ");
    rb_str_append(report, rb_obj_as_string(rb_ary_entry(trace, i)));
    rb_str_cat_cstr(report, "\n");
  }
  return report;
}

static VALUE write_report(VALUE exception) {
  return rb_funcall(rb_gv_get("$stderr"), rb_intern("write"), 1, exception_report(exception));
}

bool report_exception(VALUE exception) {
  int state = 0;
  rb_protect(write_report, exception, &state);
  if (state)
    rb_set_errinfo(Qnil);
  return state == 0;
}

} // namespace velmar
