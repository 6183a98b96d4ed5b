#include "binding/method_table.h"

extern "C" __attribute__((visibility("default"))) void Init_OptionsPanel() {
  velmar::_options_panel_define();
}
