#include "binding/exports.h"
#include "binding/method_table.h"

void Init_OptionsPanel() {
  velmar::_options_panel_define();
}
