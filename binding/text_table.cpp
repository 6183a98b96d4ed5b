#include "binding/text_table.h"

#include "binding/convert.h"
#include "binding/method_table.h"
#include "binding/script_call.h"

namespace velmar {

static VALUE myHashValues = Qnil;

namespace {

bool is_text_key(VALUE key) {
  if (!RB_TYPE_P(key, T_STRING))
    return false;
  Word word{RSTRING_PTR(key), static_cast<size_t>(RSTRING_LEN(key))};
  for (const char *text_key : kTextKeys)
    if (word == text_key)
      return true;
  return false;
}

// One warning for a list of keys, each as inspect shows it, unless it is empty.
void warn_keys(VALUE keys, const char *before, const char *after) {
  if (RARRAY_LEN(keys) > 0)
    rb_warning("Velmar::OptionsPanelWindow.new: the text table%s %" PRIsVALUE " %s", before,
               rb_ary_join(keys, rb_str_new_cstr(", ")), after);
}

// Under $VERBOSE: what the panel will show as a key rather than a text, and
// the keys it will never read.
void warn_about_table(VALUE table) {
  if (!RTEST(ruby_verbose))
    return;
  if (!RB_TYPE_P(table, T_HASH)) {
    rb_warning("Velmar::OptionsPanelWindow.new: the text table is %" PRIsVALUE
               ", not a Hash; the panel shows every key",
               rb_obj_class(table));
    return;
  }
  VALUE missing = rb_ary_new(), not_strings = rb_ary_new(), unknown = rb_ary_new();
  for (const char *key : kTextKeys) {
    VALUE key_string = rb_str_new_cstr(key);
    VALUE value = rb_hash_lookup2(table, key_string, Qundef);
    if (value == Qundef || !RB_TYPE_P(value, T_STRING))
      rb_ary_push(value == Qundef ? missing : not_strings, rb_str_inspect(key_string));
  }
  VALUE given = rb_funcall(table, rb_intern("keys"), 0);
  for (long i = 0; i < RARRAY_LEN(given); ++i)
    if (!is_text_key(rb_ary_entry(given, i)))
      rb_ary_push(unknown, rb_inspect(rb_ary_entry(given, i)));
  warn_keys(missing, " lacks", "(the panel shows these keys instead)");
  warn_keys(not_strings, "'s values of", "are not Strings (the panel shows these keys instead)");
  warn_keys(unknown, "'s keys", "are not in Velmar::OptionsPanelWindow::TEXT_KEYS");
}

} // namespace

static VALUE initialize(VALUE self, VALUE table) {
  myHashValues = table;
  warn_about_table(table);
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

// The title is fixed once the panel is built; the argument is only checked.
static VALUE text_assign(VALUE, VALUE title) {
  ensure_panel();
  string_argument(title, "title");
  return Qtrue;
}

void define_text_methods(VALUE klass) {
  static const Method methods[] = {
      {"initialize", VELMAR_GUARDED(initialize), 1},
      {"text=", VELMAR_GUARDED(text_assign), 1},
  };
  define_methods(klass, methods);
  rb_global_variable(&myHashValues);
  VALUE keys = rb_ary_new_capa(kTextKeyCount);
  for (const char *key : kTextKeys)
    rb_ary_push(keys, rb_obj_freeze(rb_utf8_str_new_cstr(key)));
  rb_define_const(klass, "TEXT_KEYS", rb_obj_freeze(keys));
}

} // namespace velmar
