// The text table: the Hash of panel texts that initialize stores.
#pragma once

#include "panel/text_keys.h"

#include <ruby.h>

namespace velmar {

// The table's value of every key, in the order of TextKey; may run Ruby code.
VALUE panel_text_values();
// The texts of those values, raising nothing: a missing table, key or String
// shows the key itself.
PanelTexts panel_texts(VALUE values);

} // namespace velmar
