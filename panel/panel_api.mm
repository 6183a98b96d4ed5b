// The panel's life as the binding drives it: built once, shown and closed.
// Each group's setters are in the file of its rules.
#import "panel/perform.h"

namespace velmar {
namespace panel {

bool is_built() {
  return built_controller != nil;
}

Outcome fetch(const PanelTexts &texts) {
  return PerformWindowing([&](OptionsPanel *) {
    OptionsPanel *controller = [OptionsPanel sharedControllerWithTexts:texts];
    // The panel is on screen; its first drawing looks up the control images,
    // which must happen here, inside the short image search, and not at the
    // host's next turn of its event loop, where a setter that built the panel
    // would leave it.
    [[controller window] displayIfNeeded];
    FindPushButtonImages(controller->m_pButton);
  });
}

Outcome show() {
  return PerformWindowing([](OptionsPanel *controller) { [controller showPanel]; });
}

Outcome close() {
  return PerformWindowing([](OptionsPanel *controller) { [controller closePanel]; });
}

} // namespace panel
} // namespace velmar
