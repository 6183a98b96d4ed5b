#pragma once

namespace velmar {

// Defines Velmar::OptionsPanelWindow with its methods, the text table and the
// observer list. Builds no panel.
void _options_panel_define();

} // namespace velmar
