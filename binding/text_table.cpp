#include "binding/text_table.h"

#include "binding/convert.h"
#include "binding/script_call.h"

namespace velmar {

static VALUE myHashValues = Qnil;

void init_text_table() {
  rb_global_variable(&myHashValues);
}

VALUE initialize(VALUE self, VALUE table) {
  myHashValues = table;
  return self;
}

// Looks every key up first: a Hash's default proc may run any Ruby code and
// raise, and no C++ text may be half-built when it does. It may also call
// `new` with another table: the lookups go on in the table that was checked.
VALUE panel_text_values() {
  VALUE table = myHashValues;
  VALUE values = rb_ary_new_capa(kTextKeyCount);
  bool is_table = RB_TYPE_P(table, T_HASH);
  for (const char *key : kTextKeys)
    rb_ary_push(values, is_table ? rb_hash_aref(table, rb_str_new_cstr(key)) : Qnil);
  RB_GC_GUARD(table);
  return values;
}

PanelTexts panel_texts(VALUE values) {
  PanelTexts texts;
  for (long i = 0; i < kTextKeyCount; ++i) {
    VALUE value = rb_ary_entry(values, i);
    texts[i] = RB_TYPE_P(value, T_STRING) ? utf8_text(value) : kTextKeys[i];
  }
  return texts;
}

VALUE _options_panel_title_assign(VALUE, VALUE title) {
  ensure_panel();
  string_argument(title, "title");
  return Qtrue;
}

} // namespace velmar
