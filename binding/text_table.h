// The text table: the Hash of panel texts that initialize stores.
#pragma once

#include "panel/text_keys.h"

#include <ruby.h>

namespace velmar {

// Also defines the class's TEXT_KEYS, the 37 keys in the order the panel reads them.
void init_text_table(VALUE klass);
// The table's value of every key, in the order of TextKey; may run Ruby code.
VALUE panel_text_values();
// The texts of those values, raising nothing: a missing table, key or String
// shows the key itself.
PanelTexts panel_texts(VALUE values);

} // namespace velmar
