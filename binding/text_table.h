// The text table: the Hash of panel texts that initialize stores.
#pragma once

#include <ruby.h>

namespace velmar {

void init_text_table();
// Hands the panel its texts; a missing table, key or String shows the key itself.
void provide_panel_texts();

VALUE initialize(VALUE self, VALUE table);
VALUE _options_panel_title_assign(VALUE self, VALUE title);

} // namespace velmar
